// The page: steps and their controls, the picture before and after. The work is the worker's.
import { codeIn, textOf } from "./code.js";
import { parseStep } from "./ombrilo/arguments.js";
import { pointEditor } from "./points.js";
import { drawSample } from "./samples.js";

const $ = (id) => document.getElementById(id);
const before = $("before").getContext("2d", { willReadFrequently: true });
const after = $("after").getContext("bitmaprenderer");
const worker = new Worker(new URL("worker.js", import.meta.url), { type: "module" });

const LARGEST = 1e8; // pixels: several copies of a picture have to fit the module's memory

let operations = new Map();
let kernels = [];
let steps = []; // {operation, values, on, node}
let language = "omb";
let calls = [];
let fileName = "ombrilo";
let busy = false;
let waiting = false;

// --- Steps as text and as arguments

// The operation of a step's text, and a value for each of its parameters.
function stepOf(text) {
  const { operation, given } = parseStep(text);
  const values = operation.parameters.map((p) => [p.name, given[p.name] ?? p.default]);
  return { operation, values: Object.fromEntries(values) };
}

function active() {
  return steps.filter((step) => step.on);
}

// --- Work, one chain at a time and always the newest

const answers = new Map(); // id -> {resolve, reject}
let lastId = 0;

function ask(question) {
  return new Promise((resolve, reject) => {
    answers.set(++lastId, { resolve, reject });
    worker.postMessage({ ...question, id: lastId });
  });
}

async function request() {
  if ("empty" in $("stage").dataset) return;
  waiting = busy;
  if (busy) return;
  busy = true;
  $("view").setAttribute("aria-busy", "true");
  try {
    showResult(await ask({ steps: active().map(textOf) }));
  } catch (error) {
    $("status").textContent = `That did not work: ${error.message}`;
  }
  busy = false;
  $("view").setAttribute("aria-busy", "false");
  if (waiting) request();
}

// --- The chain's history

let past = [];
let future = [];
let current = [];
let lastChange = { key: "", time: 0 };

function show() {
  history.replaceState(null, "", "#" + active().map(textOf).map(encodeURIComponent).join(";"));
  $("undo").disabled = past.length === 0;
  $("redo").disabled = future.length === 0;
  request();
  showCode();
}

// Changes with the same key that follow each other at once, as a slider makes them, are one.
function changed(key = "") {
  const time = performance.now();
  if (key === "" || key !== lastChange.key || time - lastChange.time > 1000) past.push(current);
  lastChange = { key, time };
  future = [];
  current = steps.map(({ operation, values, on }) => ({ operation, values: { ...values }, on }));
  show();
}

function travel(from, to) {
  if (from.length === 0) return;
  to.push(current);
  current = from.pop();
  lastChange = { key: "", time: 0 };
  steps = [];
  $("steps").replaceChildren();
  for (const step of current) addStep(step, step.on);
  show();
}
const undo = () => travel(past, future);
const redo = () => travel(future, past);
$("undo").addEventListener("click", undo);
$("redo").addEventListener("click", redo);

function setPicture() {
  const { width, height } = before.canvas;
  const { data } = before.getImageData(0, 0, width, height);
  delete $("stage").dataset.empty;
  $("save").disabled = false;
  worker.postMessage({ pixels: data, width, height }, [data.buffer]);
  request();
}

function showResult({ bitmap, width, height, bits, time, failed, histogram, calls: given }) {
  Object.assign(after.canvas, { width, height });
  after.transferFromImageBitmap(bitmap);
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
  } else if (data.id === undefined) {
    $("status").textContent = `The picture could not be taken: ${data.error}`;
  } else {
    const { resolve, reject } = answers.get(data.id);
    answers.delete(data.id);
    if (data.error) reject(new Error(data.error));
    else resolve(data);
  }
});
worker.addEventListener("error", (event) => {
  $("status").textContent = `The module cannot be loaded: ${event.message || "see the console"}`;
});

// --- Controls

function selectOf(options, value, changed) {
  const select = document.createElement("select");
  for (const option of options) select.add(new Option(option));
  select.value = value;
  select.addEventListener("change", () => changed(select.value));
  return select;
}

// A slider over the usual part of the range, and a number for all of it.
function numberControl(parameter, id, value, set) {
  const percent = parameter.type === "text";
  const whole = percent || parameter.type === "integer";
  const [least, most] = percent ? [1, 400] : [parameter.minimum, parameter.maximum];
  let [low, high] = percent ? [5, 200] : parameter.usual ?? [least, most];
  if (high > 1e6) {
    const { width, height } = before.canvas;
    high = parameter.name === "area" ? 400 : /height|bottom|top|y/.test(parameter.name) ? height : width;
  }
  const slider = Object.assign(document.createElement("input"), {
    type: "range", id, min: low, max: high,
    step: whole ? 1 : high - low <= 1 ? 0.005 : high - low <= 5 ? 0.01 : 0.1,
  });
  const number = Object.assign(document.createElement("input"), {
    type: "number", min: least, max: most, step: whole ? 1 : "any",
  });
  number.setAttribute("aria-label", `${parameter.name}, as a number`);
  slider.value = number.value = String(value).replace("%", "");
  for (const [input, other] of [[slider, number], [number, slider]]) {
    input.addEventListener("input", () => {
      other.value = input.value;
      if (input.value !== "") set(percent ? `${input.value}%` : Number(input.value));
    });
  }
  return [slider, number];
}

function control(step, parameter) {
  const { values, operation } = step;
  const id = `p${Math.random().toString(36).slice(2)}`;
  const set = (value) => {
    values[parameter.name] = value;
    changed(id);
  };
  const field = document.createElement("div");
  field.className = "field";
  const label = Object.assign(document.createElement("label"), {
    textContent: parameter.name, title: parameter.help, htmlFor: id,
  });
  field.append(label);

  const value = values[parameter.name];
  const names = parameter.values?.map((v) => v.name) ?? [];
  if (parameter.name === "points") {
    const curveOf = async (points) => operation.name === "curve"
      ? (await ask({ points })).curve
      : linesOf(points);
    field.append(pointEditor(id, value, curveOf, set));
  } else if (parameter.type === "color") {
    const input = Object.assign(document.createElement("input"), { type: "color", id, value });
    input.addEventListener("input", () => set(input.value));
    field.append(input);
  } else if (parameter.type === "choice" || names.length > 2) {
    field.append(Object.assign(selectOf(names, value, set), { id }));
  } else if (parameter.type === "text" && parameter.name !== "size") {
    field.append(Object.assign(selectOf(kernels, value, set), { id }));
  } else if (names.length === 0) {
    field.append(...numberControl(parameter, id, value, set));
  } else {
    // A name, or a number, whose controls show when it is chosen.
    const [low, high] = parameter.usual ?? [parameter.minimum, Math.min(255, parameter.maximum)];
    const middle = Math.round((low + high) / 2);
    const named = names.includes(value);
    const numbers = numberControl(parameter, `${id}n`, named ? middle : value, set);
    const display = (shown) => numbers.forEach((n) => (n.hidden = !shown));
    const select = selectOf([...names, "number"], named ? value : "number", (name) => {
      display(name === "number");
      set(name === "number" ? Number(numbers[1].value) : name);
    });
    display(!named);
    numbers[0].setAttribute("aria-label", parameter.name);
    field.append(Object.assign(select, { id }), ...numbers);
  }
  return field;
}

// What omb_segmentoperation() makes of each level, to draw it.
function linesOf(text) {
  const points = parseStep(`segmentoperation=${text}`).given.points
    .split("/").map((p) => p.split(":").map(Number));
  return Array.from({ length: 256 }, (_, v) => {
    const next = points.findIndex(([x]) => x >= v);
    if (next <= 0) return next === 0 ? points[0][1] : points.at(-1)[1];
    const [[x0, y0], [x1, y1]] = [points[next - 1], points[next]];
    return y0 + ((y1 - y0) * (v - x0)) / (x1 - x0);
  });
}

function addStep({ operation, values }, on = true) {
  const { name } = operation;
  const step = { operation, values: { ...values }, on };
  step.node = document.createElement("li");
  const head = document.createElement("div");
  head.className = "head";
  const toggle = Object.assign(document.createElement("input"), { type: "checkbox", checked: on });
  step.node.classList.toggle("off", !on);
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
    ["↑", `Move ${name} up`, () => move(-1)], ["↓", `Move ${name} down`, () => move(1)],
    ["✕", `Remove ${name}`, remove],
  ]) {
    const button = Object.assign(document.createElement("button"), { type: "button", textContent: text });
    button.title = meaning;
    button.setAttribute("aria-label", meaning);
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
}

// --- Code

function showCode() {
  $("code").textContent = codeIn(language, active(), calls);
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
    if (picture.width * picture.height > LARGEST) {
      $("status").textContent = `${file.name} is too large for this page: 100 megapixels at most.`;
      return;
    }
    Object.assign(before.canvas, { width: picture.width, height: picture.height });
    before.fillStyle = "#fff";
    before.fillRect(0, 0, picture.width, picture.height);
    before.drawImage(picture, 0, 0);
    picture.close();
    fileName = (file.name ?? "pasted").replace(/\.[^.]*$/, "") + "-ombrilo";
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
    fileName = button.dataset.sample;
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
      href: URL.createObjectURL(blob), download: `${fileName}.png`,
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
  const key = event.key.toLowerCase();
  if ((event.ctrlKey || event.metaKey) && (key === "z" || key === "y") && event.target.type !== "text") {
    event.preventDefault();
    if (key === "y" || event.shiftKey) redo();
    else undo();
  }
  if (event.ctrlKey || event.metaKey || event.altKey) return;
  if (event.target.closest("input:not([type=range]):not([type=checkbox]), select, textarea")) return;
  if (key === "a") {
    event.preventDefault();
    $("add").focus();
    $("add").showPicker?.();
  }
  if (key === "b") divide(1);
  if (key === "o") $("open").click();
  if (key === "s" && !$("save").disabled) $("save").click();
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
    if (!$("add").value) return;
    // Its first example, which can be seen.
    addStep(stepOf(operations.get($("add").value).examples[0]));
    $("add").value = "";
    changed();
    steps.at(-1).node.scrollIntoView({ block: "nearest" });
  });
  for (const text of location.hash.slice(1).split(";").filter(Boolean)) {
    try {
      addStep(stepOf(decodeURIComponent(text)));
    } catch {
      // An address that somebody changed.
    }
  }
  changed();
  past = [];
  $("undo").disabled = true;
  document.documentElement.dataset.ready = "";
}
