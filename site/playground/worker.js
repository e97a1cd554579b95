// Runs chains of steps, so that the page never waits. Messages in: {pixels, width, height} a new
// picture, {id, steps} a chain, {id, points} those of a curve. Out: {ready, operations, kernels}, then
// for each id a result, a curve or an error.
import { load } from "./ombrilo/index.js";
import { callOf } from "./code.js";

const { Image, bestfit, kernels, operations } = await load();
let source = null;

async function run(steps) {
  const image = source.copy();
  try {
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
    // Depths of 16 and 32 bits have no histogram.
    const histogram = image.bits > 24 || image.bits === 16
      ? null
      : ["red", "green", "blue"].map((channel) => image.histogram(channel));
    const { width, height, bits } = image;
    // A bitmap is shown without work on the page's own thread.
    const bitmap = await createImageBitmap(image.toImageData());
    return { bitmap, width, height, bits, time, calls, failed, histogram };
  } finally {
    image.release();
  }
}

addEventListener("message", async ({ data }) => {
  const { id } = data;
  try {
    if (data.pixels) {
      source?.release();
      source = Image.fromPixels(data.pixels, data.width, data.height);
    } else if (data.points) {
      postMessage({ id, curve: bestfit(data.points) });
    } else {
      const result = await run(data.steps);
      postMessage({ id, ...result }, [result.bitmap]);
    }
  } catch (error) {
    postMessage({ id, error: error.message });
  }
});
postMessage({ ready: true, operations, kernels });
