// The chain as a command and as code.

const quoted = (text) => (/^[\w=.,%#+-]+$/.test(text) ? text : `'${text}'`);

function omb(steps) {
  return ["omb apply in.png out.png", ...steps.map((s) => quoted(s.text))].join(" \\\n  ");
}

const literal = (value) => (typeof value === "number" ? String(value) : JSON.stringify(value));

function python(steps) {
  const lines = steps.map(({ name, values }) => {
    const words = Object.entries(values).map(([key, value]) => `${key}=${literal(value)}`);
    return `image.${name}(${words.join(", ")})`;
  });
  return ["import ombrilo", "", 'image = ombrilo.Image.open("in.png")', ...lines,
    'image.save("out.png")'].join("\n");
}

function js(steps) {
  const lines = steps.map(({ name, values }) => {
    const words = Object.entries(values).map(([key, value]) => `${key}: ${literal(value)}`);
    return `image.${name}(${words.length ? `{ ${words.join(", ")} }` : ""});`;
  });
  return ['import { load } from "ombrilo";', "", "const { Image } = await load();",
    "const image = Image.fromImageData(imageData);", ...lines,
    "const result = image.toImageData();"].join("\n");
}

function word(argument) {
  if (argument.kernel !== undefined) return `omb_getKERNAL(${argument.kernel})`;
  if (argument.rectangle) return `&(OmbRect){${argument.rectangle.join(", ")}}`;
  return argument.text;
}

function c(_, calls) {
  const lines = calls.map((call) => {
    const words = [call.replaces ? "&dib" : "dib", ...call.words.map(word)].join(", ");
    return call.name === "cpydibrect"
      ? `PackedDib* piece = (PackedDib*)${call.function}(${words});`
      : `${call.function}(${words});`;
  });
  return ["#include <ombrilo/ombrilo.h>", "",
    "PackedDib* dib = omb_frompixels(OMB_PIXELS_RGBA, width, height, pixels, stride, 0xFFFFFF);",
    ...lines, "omb_topixels(dib, OMB_PIXELS_RGBA, result, result_stride);",
    "omb_freedib(dib);"].join("\n");
}

function cpp(_, calls) {
  const lines = calls.map((call) => {
    const words = call.words.map((argument) =>
      argument.kernel !== undefined
        ? `*${word(argument)}`
        : argument.rectangle
          ? `{${argument.rectangle.join(", ")}}`
          : argument.text);
    if (call.name === "cpydibrect") return `image = image.Piece(${words.join(", ")});`;
    if (call.name === "kernel") return `image.convolute(${words.join(", ")});`;
    if (call.name === "morph") words.shift(); // the depth is the image's own
    if (call.name === "edgepage") words.unshift(words.pop()); // the filter comes first
    if (call.name === "enhancepage") {
      const [size, passes, strength, , percentile, filter] = words;
      return `image.enhancepage(${[filter, size, passes, strength, percentile].join(", ")});`;
    }
    return `image.${call.name}(${words.join(", ")});`;
  });
  return ["#include <ombrilo/ombrilo.hpp>", "", "auto image = ombrilo::Image::FromPixels(",
    "    OMB_PIXELS_RGBA, width, height, pixels, stride);", ...lines,
    "image.ToPixels(OMB_PIXELS_RGBA, result, result_stride);"].join("\n");
}

/** The chain in a language. `calls` are what the C functions are given. */
export function codeIn(language, steps, calls) {
  return { omb, python, js, c, cpp }[language](steps, calls);
}
