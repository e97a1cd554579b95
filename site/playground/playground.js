// The page: steps and their controls, the picture before and after. The work is the worker's.
import { codeIn } from "./code.js";
import { drawSample } from "./samples.js";

const $ = (id) => document.getElementById(id);
const before = $("before").getContext("2d", { willReadFrequently: true });
const after = $("after").getContext("2d");
const worker = new Worker(new URL("worker.js", import.meta.url), { type: "module" });

let operations = new Map();
let kernels = [];
let steps = []; // {operation, values, on, node}
let language = "omb";
let calls = [];
let lastId = 0;
let busy = false;
let waiting = false;

// --- Steps as text and as arguments

// What a parameter begins with: its default, or what the step's first example shows.
function startOf(operation, index) {
  const parameter = operation.parameters[index];
  if (parameter.default !== undefined) return parameter.default;
  const example = operation.examples[0].split("=").slice(1).join("=").split(",")[index];
  const number = Number(example);
  return parameter.type === "integer" || parameter.type === "number"
    ? (Number.isNaN(number) ? parameter.values?.find((v) => v.name === example)?.name ?? 0 : number)
    : example;
}

function textOf({ operation, values }) {
  const words = operation.parameters.map((p) => values[p.name]);
  return words.length ? `${operation.name}=${words.join(",")}` : operation.name;
}

function active() {
  return steps.filter((step) => step.on);
}

// --- Work, one chain at a time and always the newest

function request() {
  if ("empty" in $("stage").dataset) return;
  if (busy) {
    waiting = true;
    return;
  }
  busy = true;
  $("view").setAttribute("aria-busy", "true");
  lastId += 1;
  worker.postMessage({ id: lastId, steps: active().map(textOf) });
}

function changed() {
  history.replaceState(null, "", "#" + active().map(textOf).map(encodeURIComponent).join(";"));
  request();
  showCode();
}

function setPicture() {
  const { width, height } = before.canvas;
  const { data } = before.getImageData(0, 0, width, height);
  delete $("stage").dataset.empty;
  $("save").disabled = false;
  worker.postMessage({ pixels: data, width, height }, [data.buffer]);
  request();
}

function showResult({ pixels, width, height, bits, time, failed, histogram, calls: given }) {
  Object.assign(after.canvas, { width, height });
  after.putImageData(new ImageData(pixels, width, height), 0, 0);
  const size = `${width} × ${height} pixels, ${bits} ${bits === 1 ? "bit" : "bits"}`;
  $("status").textContent = `${size} · ${time < 10 ? time.toFixed(1) : Math.round(time)} ms`;
  active().forEach((step, i) => {
    const message = failed?.index === i ? failed.message : "";
    step.node.classList.toggle("bad", message !== "");
    step.node.querySelector(".note").textContent = message || step.operation.note || "";
  });
  calls = given;
  drawHistogram(histogram);
  showCode();
}

function drawHistogram(channels) {
  const canvas = $("histogram");
  const context = canvas.getContext("2d");
  const { width, height } = canvas;
  context.clearRect(0, 0, width, height);
  if (!channels) return;
  const dark = matchMedia("(prefers-color-scheme: dark)").matches;
  context.globalCompositeOperation = dark ? "lighten" : "multiply";
  // Single high columns, such as white paper, do not flatten the others.
  const sorted = channels.flatMap((c) => [...c]).sort((a, b) => b - a);
  const top = Math.max(1, sorted[Math.min(12, sorted.length - 1)]);
  const colors = dark ? ["#c5483d", "#4f9e50", "#4577c9"] : ["#f08a80", "#8fcb90", "#8db0ea"];
  channels.forEach((counts, c) => {
    context.fillStyle = colors[c];
    counts.forEach((count, level) => {
      const bar = Math.min(1, Math.sqrt(count / top)) * (height - 8);
      context.fillRect((level * width) / 256, height - bar, width / 256, bar);
    });
  });
  context.globalCompositeOperation = "source-over";
}

worker.addEventListener("message", ({ data }) => {
  if (data.ready) {
    start(data);
    return;
  }
  busy = false;
  $("view").setAttribute("aria-busy", "false");
  showResult(data);
  if (waiting) {
    waiting = false;
    request();
  }
});
worker.addEventListener("error", (event) => {
  $("status").textContent = `The module cannot be loaded: ${event.message || "see the console"}`;
});

// --- Controls

function control(step, parameter) {
  const { values } = step;
  const set = (value) => {
    values[parameter.name] = value;
    changed();
  };
  const field = document.createElement("div");
  field.className = "field";
  const label = document.createElement("label");
  label.textContent = parameter.name;
  label.title = parameter.help;
  const id = `p${Math.random().toString(36).slice(2)}`;
  label.htmlFor = id;
  field.append(label);

  const names = parameter.values?.map((v) => v.name) ?? [];
  const isKernel = parameter.type === "text" && parameter.name !== "size";
  const percent = parameter.type === "text" && parameter.name === "size";
  const manyNames = names.length > 2;
  if (parameter.type === "choice" || isKernel || manyNames) {
    const select = document.createElement("select");
    for (const name of isKernel ? kernels : names) select.add(new Option(name));
    select.id = id;
    select.value = values[parameter.name];
    select.addEventListener("change", () => set(select.value));
    field.append(select);
    return field;
  }
  if (parameter.type === "color") {
    const input = Object.assign(document.createElement("input"), { type: "color", id });
    input.value = values[parameter.name];
    input.addEventListener("input", () => set(input.value));
    field.append(input);
    return field;
  }
  // A slider over the usual part of the range, and a number for all of it.
  const whole = parameter.type === "integer" || percent;
  let [low, high] = percent ? [1, 400] : [parameter.minimum, parameter.maximum];
  const fixed = [low, high];
  const { width, height } = before.canvas;
  if (high > 1e6) high = /height|bottom|top|y/.test(parameter.name) ? height : width;
  if (parameter.name === "degrees") [low, high] = [-180, 180];
  if (parameter.name === "gamma") [low, high] = [0.1, 4];
  if (percent) [low, high] = [5, 200];
  if (high === 1000) high = parameter.name === "strength" ? 40 : 10;
  const slider = Object.assign(document.createElement("input"), {
    type: "range", id, min: low, max: high,
    step: whole ? 1 : high - low <= 1 ? 0.005 : high - low <= 5 ? 0.01 : 0.1,
  });
  const number = Object.assign(document.createElement("input"), {
    type: "number", min: fixed[0], max: fixed[1], step: whole ? 1 : "any",
  });
  number.setAttribute("aria-label", `${parameter.name}, as a number`);
  const show = (value) => {
    slider.value = number.value = String(value).replace("%", "");
    if (Number.isNaN(parseFloat(value))) number.placeholder = value;
  };
  show(values[parameter.name]);
  const take = (text) => {
    if (text === "" || Number.isNaN(Number(text))) return;
    set(percent ? `${text}%` : Number(text));
  };
  slider.addEventListener("input", () => {
    number.value = slider.value;
    take(slider.value);
  });
  number.addEventListener("input", () => {
    slider.value = number.value;
    take(number.value);
  });
  field.append(slider, number);
  return field;
}

function addStep(name, values = {}) {
  const operation = operations.get(name);
  const step = { operation, values: {}, on: true };
  operation.parameters.forEach((parameter, i) => {
    step.values[parameter.name] = values[parameter.name] ?? startOf(operation, i);
  });
  step.node = document.createElement("li");
  const head = document.createElement("div");
  head.className = "head";
  const toggle = Object.assign(document.createElement("input"), { type: "checkbox", checked: true });
  toggle.setAttribute("aria-label", `Use ${name}`);
  toggle.addEventListener("change", () => {
    step.on = toggle.checked;
    step.node.classList.toggle("off", !step.on);
    step.node.classList.remove("bad");
    changed();
  });
  const title = Object.assign(document.createElement("strong"), { textContent: name });
  head.append(toggle, title);
  const move = (by) => {
    const from = steps.indexOf(step);
    const to = from + by;
    if (to < 0 || to >= steps.length) return;
    steps.splice(to, 0, ...steps.splice(from, 1));
    $("steps").replaceChildren(...steps.map((s) => s.node));
    changed();
  };
  const remove = () => {
    steps = steps.filter((s) => s !== step);
    step.node.remove();
    $("add").focus();
    changed();
  };
  for (const [text, meaning, action] of [
    ["↑", "earlier", () => move(-1)], ["↓", "later", () => move(1)], ["✕", "away", remove],
  ]) {
    const button = Object.assign(document.createElement("button"), { type: "button", textContent: text });
    button.setAttribute("aria-label", `Move ${name} ${meaning}`);
    button.addEventListener("click", () => {
      action();
      if (button.isConnected) button.focus();
    });
    head.append(button);
  }
  const summary = document.createElement("p");
  summary.className = "summary";
  summary.textContent = operation.summary;
  const note = Object.assign(document.createElement("p"), { className: "note" });
  step.node.append(head, summary, ...operation.parameters.map((p) => control(step, p)), note);
  steps.push(step);
  $("steps").append(step.node);
  changed();
}

// --- Code

function showCode() {
  const shown = active().map((step) => ({ ...step, name: step.operation.name, text: textOf(step) }));
  $("code").textContent = codeIn(language, shown, calls);
  for (const tab of document.querySelectorAll("[role=tab]")) {
    const selected = tab.id === `tab-${language}`;
    tab.setAttribute("aria-selected", selected);
    tab.tabIndex = selected ? 0 : -1;
    if (selected) $("code").setAttribute("aria-labelledby", tab.id);
  }
}

const tabs = [...document.querySelectorAll("[role=tab]")];
for (const [i, tab] of tabs.entries()) {
  tab.addEventListener("click", () => {
    language = tab.id.slice(4);
    showCode();
  });
  tab.addEventListener("keydown", (event) => {
    const by = { ArrowRight: 1, ArrowLeft: tabs.length - 1 }[event.key];
    if (!by) return;
    const next = tabs[(i + by) % tabs.length];
    next.click();
    next.focus();
  });
}
$("copy").addEventListener("click", async () => {
  try {
    await navigator.clipboard.writeText($("code").textContent);
    $("copy").textContent = "Copied";
  } catch {
    getSelection().selectAllChildren($("code"));
  }
  setTimeout(() => ($("copy").textContent = "Copy"), 1500);
});

// --- Pictures in and out

async function take(file) {
  try {
    const picture = await createImageBitmap(file);
    Object.assign(before.canvas, { width: picture.width, height: picture.height });
    before.fillStyle = "#fff";
    before.fillRect(0, 0, picture.width, picture.height);
    before.drawImage(picture, 0, 0);
    picture.close();
    setPicture();
  } catch {
    $("status").textContent = `${file.name ?? "This"} is not a picture that this browser reads.`;
  }
}

$("open").addEventListener("click", () => $("file").click());
$("file").addEventListener("change", () => $("file").files[0] && take($("file").files[0]));
for (const button of document.querySelectorAll("[data-sample]")) {
  button.addEventListener("click", () => {
    drawSample(button.dataset.sample, before);
    setPicture();
  });
}
addEventListener("dragover", (event) => {
  event.preventDefault();
  $("stage").classList.add("over");
});
addEventListener("dragleave", () => $("stage").classList.remove("over"));
addEventListener("drop", (event) => {
  event.preventDefault();
  $("stage").classList.remove("over");
  if (event.dataTransfer.files[0]) take(event.dataTransfer.files[0]);
});
addEventListener("paste", (event) => {
  const file = [...event.clipboardData.files].find((f) => f.type.startsWith("image/"));
  if (file) take(file);
});
$("save").addEventListener("click", () => {
  after.canvas.toBlob((blob) => {
    const link = Object.assign(document.createElement("a"), {
      href: URL.createObjectURL(blob), download: "ombrilo.png",
    });
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 10000);
  }, "image/png");
});

function divide(part) {
  $("stage").style.setProperty("--part", part);
  $("stage").style.setProperty("--at", `${part * 100}%`);
}
$("divider").addEventListener("input", () => divide($("divider").value / 1000));

addEventListener("keydown", (event) => {
  if (event.ctrlKey || event.metaKey || event.altKey) return;
  if (event.target.closest("input:not([type=range]):not([type=checkbox]), select, textarea")) return;
  if (event.key === "a") {
    event.preventDefault();
    $("add").focus();
    $("add").showPicker?.();
  }
  if (event.key === "b") divide(1);
  if (event.key === "o") $("open").click();
  if (event.key === "s" && !$("save").disabled) $("save").click();
});
addEventListener("keyup", (event) => event.key === "b" && divide($("divider").value / 1000));
matchMedia("(prefers-color-scheme: dark)").addEventListener("change", request);

// --- Start

function start(data) {
  operations = new Map(data.operations.map((o) => [o.name, o]));
  kernels = data.kernels;
  const groups = Map.groupBy?.(data.operations, (o) => o.family) ??
    data.operations.reduce((m, o) => m.set(o.family, [...(m.get(o.family) ?? []), o]), new Map());
  for (const [family, members] of groups) {
    const group = Object.assign(document.createElement("optgroup"), { label: family });
    for (const { name, summary } of members) group.append(new Option(`${name}: ${summary}`, name));
    $("add").append(group);
  }
  $("add").addEventListener("change", () => {
    if ($("add").value) addStep($("add").value);
    $("add").value = "";
  });
  for (const text of location.hash.slice(1).split(";").filter(Boolean).map(decodeURIComponent)) {
    const [name, ...rest] = text.split("=");
    const operation = operations.get(name);
    if (!operation) continue;
    const words = rest.join("=").split(",");
    const values = {};
    operation.parameters.forEach((p, i) => {
      if (!words[i]) return;
      const numeric = (p.type === "integer" || p.type === "number") && !Number.isNaN(Number(words[i]));
      values[p.name] = numeric ? Number(words[i]) : words[i];
    });
    addStep(name, values);
  }
  document.documentElement.dataset.ready = "";
  showCode();
}
