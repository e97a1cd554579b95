// Runs chains of steps, so that the page never waits. Messages in: {pixels, width, height} a new
// picture, {id, steps} a chain. Out: {ready, operations, kernels}, then a result for each chain.
import { load } from "./ombrilo/index.js";
import { argumentsOf, parseStep } from "./ombrilo/arguments.js";

const { Image, kernels, operations } = await load();
let source = null;

// What the C function is given, for the lines of code.
function callOf(text, image) {
  const { operation, given } = parseStep(text);
  const { values, list } = argumentsOf(operation, image, given);
  const words = operation.arguments.map((argument, i) => {
    switch (argument.convert) {
      case "kernel":
        return { kernel: kernels.findIndex((_, k) => image.kernelAddress("", k) === list[i]) };
      case "rectangle":
        return { rectangle: argument.parameters.map((p) => values[p]) };
      case "ramp":
        return { text: "table" };
      default:
        return { text: argument.enumeration?.[list[i]] ?? String(list[i]) };
    }
  });
  return { name: operation.name, function: operation.function, replaces: operation.replaces, words };
}

function run({ id, steps }) {
  const image = source.copy();
  const calls = [];
  let failed = null;
  let time = 0;
  for (const [index, text] of steps.entries()) {
    try {
      const call = callOf(text, image);
      const start = performance.now();
      image.apply(text);
      time += performance.now() - start;
      calls.push(call);
    } catch (error) {
      failed = { index, message: error.message };
      break;
    }
  }
  let histogram = null;
  try {
    histogram = ["red", "green", "blue"].map((channel) => image.histogram(channel));
  } catch {
    // Depths that have none.
  }
  const { width, height, bits } = image;
  const pixels = image.toPixels();
  image.release();
  postMessage({ id, pixels, width, height, bits, time, calls, failed, histogram }, [pixels.buffer]);
}

addEventListener("message", ({ data }) => {
  if (data.pixels) {
    source?.release();
    source = Image.fromPixels(data.pixels, data.width, data.height);
  } else if (source) {
    run(data);
  }
});
postMessage({ ready: true, operations, kernels });
