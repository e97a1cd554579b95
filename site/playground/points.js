// A tone curve to draw: points are dragged with the pointer, or written as text.

const parse = (text) => text.split("/").map((part) => part.split(":").map(Number));
// A level's place on the canvas of 512 x 512, with room for points at the edges.
const across = (x) => 16 + (480 / 255) * x;
const down = (y) => 496 - (480 / 255) * y;
const write = (points) => points.map((p) => p.join(":")).join("/");

/**
 * A node with the curve and its text. `changed` is called with each new text; `curveOf`, given the
 * text, promises the level that each level becomes.
 */
export function pointEditor(id, start, curveOf, changed) {
  const node = document.createElement("div");
  node.className = "points";
  const canvas = Object.assign(document.createElement("canvas"), { width: 512, height: 512 });
  canvas.title = "Drag points; a click beside them makes another, a double click takes one away";
  const input = Object.assign(document.createElement("input"), { type: "text", id, value: start });
  input.spellcheck = false;
  node.append(canvas, input);
  let points = parse(start);
  let dragged = -1;

  function draw(curve) {
    const context = canvas.getContext("2d");
    const style = getComputedStyle(node);
    context.clearRect(0, 0, 512, 512);
    context.strokeStyle = style.getPropertyValue("--edge");
    for (let i = 0; i <= 4; ++i) {
      context.strokeRect(16 + 120 * i, 16, 0, 480);
      context.strokeRect(16, 16 + 120 * i, 480, 0);
    }
    context.strokeStyle = context.fillStyle = style.getPropertyValue("--accent");
    context.lineWidth = 5;
    context.beginPath();
    curve.forEach((y, x) => context.lineTo(across(x), down(y)));
    context.stroke();
    for (const [x, y] of points) {
      context.beginPath();
      context.arc(across(x), down(y), 11, 0, 7);
      context.fill();
    }
  }

  async function take(text) {
    input.value = text;
    changed(text);
    draw(await curveOf(text));
  }

  // The level under the pointer; the picture may be scaled.
  function at(event) {
    const box = canvas.getBoundingClientRect();
    const level = (part) => Math.round(Math.min(255, Math.max(0, ((512 * part - 16) / 480) * 255)));
    return [level((event.clientX - box.left) / box.width), level((box.bottom - event.clientY) / box.height)];
  }
  const near = ([x, y]) => points.findIndex((p) => Math.hypot(p[0] - x, p[1] - y) < 16);

  canvas.addEventListener("pointerdown", (event) => {
    const [x, y] = at(event);
    dragged = near([x, y]);
    if (dragged < 0) {
      points = [...points.filter((p) => p[0] !== x), [x, y]].sort((a, b) => a[0] - b[0]);
      dragged = points.findIndex((p) => p[0] === x);
      take(write(points));
    }
    canvas.setPointerCapture(event.pointerId);
  });
  canvas.addEventListener("pointermove", (event) => {
    if (dragged < 0) return;
    const [x, y] = at(event);
    const from = dragged > 0 ? points[dragged - 1][0] + 1 : 0;
    const to = dragged + 1 < points.length ? points[dragged + 1][0] - 1 : 255;
    points[dragged] = [Math.min(to, Math.max(from, x)), y];
    take(write(points));
  });
  for (const end of ["pointerup", "pointercancel"]) {
    canvas.addEventListener(end, () => (dragged = -1));
  }
  canvas.addEventListener("dblclick", (event) => {
    const found = near(at(event));
    if (found < 0 || points.length < 2) return;
    points.splice(found, 1);
    take(write(points));
  });
  input.addEventListener("change", async () => {
    try {
      draw(await curveOf(input.value));
      points = parse(input.value);
      take(input.value);
      input.setCustomValidity("");
    } catch (error) {
      input.setCustomValidity(error.message);
      input.reportValidity();
    }
  });
  queueMicrotask(async () => draw(await curveOf(start)));
  return node;
}
