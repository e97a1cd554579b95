// The chain as a command and as code.
import description from "./ombrilo/description.js";
import { argumentsOf, parseStep } from "./ombrilo/arguments.js";

/** A step as `omb` takes it, without the defaults that nothing follows. */
export function textOf({ operation, values }) {
  const words = operation.parameters.map((p) => [values[p.name], p.default]);
  while (words.length && words.at(-1)[0] === words.at(-1)[1]) words.pop();
  return operation.name + (words.length ? `=${words.map((w) => w[0]).join(",")}` : "");
}

/**
 * What a step's C function is given for an image as the step finds it: words, which are the text of
 * a number, or what is written differently in C and in C++.
 */
export function callOf(text, image) {
  const { operation, given } = parseStep(text);
  const { values, list } = argumentsOf(operation, image, given);
  const words = operation.arguments.map((argument, i) => {
    const value = values[argument.parameter];
    switch (argument.convert) {
      case "kernel":
        return { kernel: `OMB_KERNAL_${String(value).trim().toUpperCase().replace(/\W/g, "_")}` };
      case "rectangle":
      case "points":
        return { [argument.convert]: [...list[i]] };
      case "ramp":
        return { ramp: operation.parameters[0].values.find((v) => v.value === values.ramp).name };
      default:
        return { text: argument.enumeration?.[list[i]] ?? String(list[i]) };
    }
  });
  const { name, replaces } = operation;
  const found = name === "binary" && values.threshold < 0;
  return { name, function: operation.function, replaces, words, note: found ? "of this picture" : "" };
}

// --- A command, and packages whose methods are the steps

const quoted = (text) => (/^[\w=.,%#+:/-]+$/.test(text) ? text : `'${text}'`);

function omb(steps) {
  return ["omb apply in.png out.png", ...steps.map((s) => quoted(textOf(s)))].join(" \\\n  ");
}

function argumentsWritten({ operation, values }, separator) {
  return operation.parameters
    .filter((p) => values[p.name] !== p.default)
    .map((p) => `${p.name}${separator}${JSON.stringify(values[p.name])}`);
}

function python(steps) {
  const lines = steps.map((step) =>
    `image.${step.operation.name}(${argumentsWritten(step, "=").join(", ")})`);
  return ["import ombrilo", "", 'image = ombrilo.Image.open("in.png")', ...lines,
    'image.save("out.png")'].join("\n");
}

function js(steps) {
  const lines = steps.map((step) => {
    const words = argumentsWritten(step, ": ");
    return `image.${step.operation.name}(${words.length ? `{ ${words.join(", ")} }` : ""});`;
  });
  return ['import { load } from "ombrilo";', "", "const { Image } = await load();",
    "const image = Image.fromImageData(imageData);", ...lines,
    "const result = image.toImageData();"].join("\n");
}

// --- C and C++, whose arguments are those of the C functions

const pairs = (numbers) => numbers.flatMap((x, i) => (i % 2 ? [] : [`{${x}, ${numbers[i + 1]}}`]));

// Each color of the table becomes the ramp's for its level. `dib` is how the image is written.
function rampLines(ramp, dib) {
  const stops = description.ramps[ramp].map((s) => `0x${s.toString(16).padStart(6, "0")}`);
  const parts = stops.length - 1;
  return [`{  // ${ramp}`,
    `  const uint32_t stops[] = {${stops.join(", ")}};`,
    "  uint8_t table[4 * 256] = {0};",
    `  const uint8_t* levels = omb_FindDIBBits(${dib}) - omb_PaletteSize(${dib});`,
    `  for (uint32_t i = 0; i < omb_DIBNumColors(${dib}); ++i) {`,
    "    const uint32_t level = levels[4 * i];",
    `    const uint32_t part = level == 255 ? ${parts - 1} : level * ${parts} / 255;`,
    `    const uint32_t share = level * ${parts} - part * 255;`,
    "    for (uint32_t c = 0; c < 3; ++c) {",
    "      const uint32_t from = stops[part] >> 8 * c & 255, to = stops[part + 1] >> 8 * c & 255;",
    "      table[4 * i + c] = (uint8_t)((from * (255 - share) + to * share + 127) / 255);",
    "    }",
    "  }"];
}

function c(_, calls) {
  const words = (call) => call.words.map((w) => {
    if (w.kernel) return `omb_getKERNAL(${w.kernel})`;
    if (w.rectangle) return `&(OmbRect){${w.rectangle.join(", ")}}`;
    if (w.points) return `(OmbPoint[]){${pairs(w.points).join(", ")}}`;
    return w.ramp ? "table" : w.text;
  });
  let pieces = 0;
  const lines = calls.flatMap((call) => {
    const given = [call.replaces ? "&dib" : "dib", ...words(call)].join(", ");
    const line = `${call.function}(${given});${call.note && `  // ${call.note}`}`;
    if (call.name === "pseudocolor") {
      return [...rampLines(call.words[0].ramp, "dib"), `  ${line}`, "}"];
    }
    if (call.name !== "cpydibrect") return [line];
    const piece = `piece${++pieces}`;
    return [`PackedDib* ${piece} = (PackedDib*)${line}`, "omb_freedib(dib);", `dib = ${piece};`];
  });
  return ["#include <ombrilo/ombrilo.h>", "",
    "PackedDib* dib = omb_frompixels(OMB_PIXELS_RGBA, width, height, pixels, stride, 0xFFFFFF);",
    ...lines, "omb_topixels(dib, OMB_PIXELS_RGBA, result, result_stride);",
    "omb_freedib(dib);"].join("\n");
}

// Members whose name or order of arguments is not that of the C function.
const adjust = (words) => ["adjustcolor", words];
const curve = (name) => ([points, , channel]) => [name, [points, channel]];
const tone = (name) => ([, percent, cut, block]) => [name, [block, cut, percent]];
const members = {
  coloroffset: adjust, colorgain: adjust, hsl: adjust, hsi: adjust,
  curve: curve("curve"), segmentoperation: curve("segmentoperation"),
  kernel: (words) => ["convolute", words],
  morph: ([, ...words]) => ["morph", words],
  edgepage: ([size, passes, strength, filter]) => ["edgepage", [filter, size, passes, strength]],
  enhancepage: ([size, passes, strength, , percentile, filter]) =>
    ["enhancepage", [filter, size, passes, strength, percentile]],
  morphologicalpage: ([size, shape, iterations, op]) =>
    ["morphologicalpage", [op, size, shape, iterations]],
  truecolor: () => ["truecolor", []],
  whiten: tone("whiten"), stretch: tone("stretch"), equalize: tone("equalize"),
  logarithm: ([, percent, , block]) => ["logarithm", [block, percent]],
};

function cpp(_, calls) {
  const lines = calls.flatMap((call) => {
    const given = call.words.map((w) => {
      if (w.rectangle) return `{${w.rectangle.join(", ")}}`;
      if (w.points) return `{${pairs(w.points).join(", ")}}`;
      return w.ramp ? "table" : w.kernel ?? w.text;
    });
    if (call.name === "cpydibrect") return [`image = image.Piece(${given.join(", ")});`];
    const [member, words] = members[call.name]?.(given) ?? [call.name, given];
    const line = `image.${member}(${words.join(", ")});${call.note && `  // ${call.note}`}`;
    return call.name === "pseudocolor"
      ? [...rampLines(call.words[0].ramp, "image.get()"), `  ${line}`, "}"]
      : [line];
  });
  return ["#include <ombrilo/ombrilo.hpp>", "",
    "auto image = ombrilo::Image::FromPixels(OMB_PIXELS_RGBA, width, height, pixels, stride);",
    ...lines, "image.ToPixels(OMB_PIXELS_RGBA, result, result_stride);"].join("\n");
}

/** The chain in a language. Steps are {operation, values}; `calls` are what callOf() says of them. */
export function codeIn(language, steps, calls) {
  return { omb, python, js, c, cpp }[language](steps, calls);
}
