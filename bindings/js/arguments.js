// Arguments as people write them, made into those of the C functions by the description.
import description from "./description.js";

export const operations = new Map(description.operations.map((o) => [o.name, o]));
const ramps = Object.values(description.ramps);

/** What the library refused, or an argument that is wrong. The image is as it was. */
export class OmbriloError extends Error {
  name = "OmbriloError";
}

/** One parameter's value, checked: a number, except of texts. */
function valueOf(operation, parameter, given) {
  const wrong = () =>
    new OmbriloError(`${operation.name}: '${parameter.name}' must be ${parameter.form}, not ${given}`);
  const named = parameter.values ?? [];
  if (parameter.type === "text") return given;
  if (typeof given === "string") {
    const found = named.find((v) => v.name.toLowerCase() === given.toLowerCase());
    if (found) return found.value;
    if (parameter.type !== "color" || !/^#[0-9a-f]{6}$/i.test(given)) throw wrong();
    const rgb = parseInt(given.slice(1), 16);
    return ((rgb & 255) << 16) | (rgb & 0xff00) | (rgb >> 16);
  }
  if (typeof given !== "number" || !Number.isFinite(given)) throw wrong();
  if (parameter.type !== "number" && !Number.isInteger(given)) throw wrong();
  const fits =
    parameter.type === "choice"
      ? named.some((v) => v.value === given)
      : given >= parameter.minimum && given <= parameter.maximum;
  if (!fits) throw wrong();
  return given;
}

function sizeOf(operation, image, given) {
  const scaled = (side, factor) => Math.max(1, Math.floor(side * factor + 0.5));
  let width = 0;
  let height = 0;
  let match;
  if (Array.isArray(given) && given.length === 2) {
    [width, height] = given;
  } else if ((match = /^(\d+(?:\.\d*)?)%$/.exec(given)) && Number(match[1]) > 0) {
    width = scaled(image.width, Number(match[1]) / 100);
    height = scaled(image.height, Number(match[1]) / 100);
  } else if ((match = /^(\d*)x(\d*)$/i.exec(given)) && given.length > 1) {
    width = Number(match[1]) || scaled(image.width, Number(match[2]) / image.height);
    height = Number(match[2]) || scaled(image.height, width / image.width);
  }
  const fits = (side) => Number.isInteger(side) && side >= 1 && side <= 1e6;
  if (fits(width) && fits(height)) return [width, height];
  throw new OmbriloError(
    `${operation.name}: 'size' must be a size such as 800x600, 800x, x600, 50% or [800, 600], ` +
      `not ${given}`);
}

/** The C function's points, of pairs or of text such as "0:0/64:48/255:255". */
export function pointsOf(name, given) {
  const pairs = typeof given === "string"
    ? given.split("/").map((part) => part.split(":").map((level) => (level ? Number(level) : NaN)))
    : given;
  const fits = Array.isArray(pairs) && pairs.length > 0 && pairs.every((pair, i) =>
    pair.length === 2 && pair.every((v) => Number.isInteger(v) && v >= 0 && v <= 255) &&
    (i === 0 || pairs[i - 1][0] < pair[0]));
  if (fits) return Int32Array.from(pairs.flat());
  throw new OmbriloError(
    `${name}: 'points' must be levels from 0 to 255 from dark to light, such as ` +
      `[[0, 0], [64, 48], [255, 255]] or "0:0/64:48/255:255", not ${given}`);
}

/** -1 takes what suits pages: a twelfth of the width. */
function blockOf(image, blocks) {
  return blocks === -1 ? Math.min(Math.max(Math.floor(image.width / 12), 16), 32767) : blocks;
}

function pageSizeOf(operation, values) {
  const higauss = operation.name === "enhancepage" && values.filter === 3;
  if (higauss && values.size === 3) {
    throw new OmbriloError("enhancepage: higauss comes in 5x5, 7x7 and 9x9");
  }
  if (values.size === 9 && !higauss) {
    throw new OmbriloError("enhancepage: only higauss comes in 9x9");
  }
  return (values.size - (higauss ? 5 : 3)) / 2;
}

/**
 * A kernel of one's own as a KERNAL of the C header: words, of which those at `pointers` count bytes
 * from the first one.
 */
function kernelOf(name, { weights, bias = 0, anchor }) {
  const width = weights?.[0]?.length ?? 0;
  const [x, y] = anchor ?? [width >> 1, weights?.length >> 1];
  if (width === 0 || weights.some((row) => row.length !== width) || !(weights[y]?.length > x && x >= 0)) {
    throw new OmbriloError(
      `${name}: a kernel is rows of equal length, its anchor one of their columns and rows`);
  }
  const cells = weights.flatMap((row, r) => row.map((weight, column) => [column - x, y - r, weight]))
    .filter((cell) => cell[2] !== null);
  const head = [width, weights.length, x, y, cells.length, bias, 36, 0, 36 + 8 * cells.length];
  return {
    words: Int32Array.from([...head, ...cells.flatMap(([dx, dy]) => [dx, dy]), ...cells.map((c) => c[2])]),
    pointers: [6, 8],
  };
}

/** Each entry of the image's table gets the ramp's color for its own gray level: B, G, R, 0. */
function rampOf(image, number) {
  const stops = ramps[number];
  const parts = stops.length - 1;
  const table = [];
  for (const [level] of image.palette) {
    const first = level === 255 ? parts - 1 : Math.floor((level * parts) / 255);
    const share = level * parts - first * 255;
    for (const shift of [0, 8, 16]) {
      const from = (stops[first] >> shift) & 255;
      const to = (stops[first + 1] >> shift) & 255;
      table.push(Math.floor((from * (255 - share) + to * share + 127) / 255));
    }
    table.push(0);
  }
  return table;
}

/** The threshold that parts dark from light best (N. Otsu, 1979), as `omb` takes it. */
function otsu(image) {
  const counts = image.histogram("gray");
  let total = 0, whole = 0, dark = 0, darkSum = 0, best = 0, threshold = 127;
  counts.forEach((n, level) => { total += n; whole += n * level; });
  for (let level = 0; level < 255; ++level) {
    dark += counts[level];
    darkSum += counts[level] * level;
    if (dark === 0 || dark === total) continue;
    const difference = darkSum / dark - (whole - darkSum) / (total - dark);
    const variance = dark * (total - dark) * difference * difference;
    if (variance <= best) continue;
    best = variance;
    threshold = level;
  }
  // Above 128 the library takes the threshold itself for light.
  return threshold < 128 ? threshold : threshold + 1;
}

/** The values by name, and the C function's arguments: numbers, or arrays that go to memory. */
export function argumentsOf(operation, image, given) {
  const unknown = Object.keys(given).find((k) => !operation.parameters.some((p) => p.name === k));
  if (unknown) throw new OmbriloError(`${operation.name}: there is no argument '${unknown}'`);
  const values = {};
  for (const parameter of operation.parameters) {
    const value = given[parameter.name] ?? parameter.default;
    if (value === undefined) {
      throw new OmbriloError(`${operation.name}: '${parameter.name}' is missing`);
    }
    values[parameter.name] = valueOf(operation, parameter, value);
  }
  const list = operation.arguments.map((argument) => {
    const value = values[argument.parameter];
    switch (argument.convert) {
      case "constant":
        return argument.value;
      case "depth":
        return image.bits;
      case "threshold":
        return value === -1 ? image.autothreshold() : value === -2 ? otsu(image) : value;
      case "square":
        return value === 0 ? values.width : value;
      case "seed":
        return BigInt(value === -1 ? Date.now() : value);
      case "width":
        return sizeOf(operation, image, value)[0];
      case "height":
        return sizeOf(operation, image, value)[1];
      case "page_size":
        return pageSizeOf(operation, values);
      case "kernel":
        return value !== null && typeof value === "object"
          ? kernelOf(operation.name, value)
          : image.kernelAddress(operation.name, value);
      case "ramp":
        return Uint8Array.from(rampOf(image, values.ramp));
      case "rectangle":
        return Int32Array.from(argument.parameters.map((p) => values[p]));
      case "points":
        return pointsOf(operation.name, value);
      case "count":
        return pointsOf(operation.name, value).length / 2;
      case "block":
        return blockOf(image, value);
      case "scope":
        return value === 0 ? 0 : 1;
      default:
        return value;
    }
  });
  return { values, list };
}

/** A step as `omb` takes it, "scale=50%,bicubic": its operation and arguments by name. */
export function parseStep(text) {
  const [, name, rest] = /^([^=]*)=?(.*)$/s.exec(text);
  const operation = operations.get(name.toLowerCase());
  if (!operation) throw new OmbriloError(`there is no step '${name}'`);
  const given = {};
  for (const [i, text] of (rest === "" ? [] : rest.split(",")).entries()) {
    const [, key, word] = /^(?:([^=]*)=)?(.*)$/s.exec(text);
    const parameter = key === undefined
      ? operation.parameters[i]
      : operation.parameters.find((p) => p.name === key.toLowerCase());
    if (!parameter) {
      throw new OmbriloError(`${operation.name}: there is no argument '${key ?? word}'`);
    }
    if (parameter.name in given) {
      throw new OmbriloError(`${operation.name}: '${parameter.name}' is given twice`);
    }
    const numeric = parameter.type === "integer" || parameter.type === "number";
    if (word !== "") given[parameter.name] = numeric && !isNaN(word) ? Number(word) : word;
  }
  return { operation, given };
}
