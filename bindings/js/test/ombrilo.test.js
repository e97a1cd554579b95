// The package under Node. Arguments by environment: PACKAGE, its folder, and OMB, the program.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { test } from "node:test";
import { fileURLToPath, pathToFileURL } from "node:url";

const { load, OmbriloError } = await import(pathToFileURL(join(process.env.PACKAGE, "index.js")));
const { parseStep } = await import(pathToFileURL(join(process.env.PACKAGE, "arguments.js")));
const { Image, bestfit, kernels, operations, version } = await load();

function noise(width, height, channels = 4) {
  let seed = 7;
  return Uint8ClampedArray.from({ length: width * height * channels }, (_, i) => {
    seed = (Math.imul(seed, 1664525) + 1013904223) >>> 0;
    return channels === 4 && i % 4 === 3 ? 255 : seed >>> 24;
  });
}

test("pixels come in and go out", () => {
  const data = noise(37, 23);
  const image = Image.fromImageData({ data, width: 37, height: 23 });
  assert.deepEqual([image.width, image.height, image.bits], [37, 23, 24]);
  assert.deepEqual(image.toImageData().data, data);
  assert.deepEqual(image.copy().invert().invert().toPixels(), data);
  const rgb = noise(5, 4, 3);
  assert.deepEqual(Image.fromPixels(rgb, 5, 4, { format: "rgb" }).toPixels("rgb"), rgb);
  const clear = Image.fromPixels(new Uint8Array(4), 1, 1, { background: "#102030" });
  assert.deepEqual([...clear.toPixels("rgb")], [16, 32, 48]);
});

test("what is refused says why and changes nothing", () => {
  const image = Image.fromPixels(noise(9, 9), 9, 9);
  const before = image.toPixels();
  for (const [reason, call] of [
    [/'mode' must be point/, () => image.scale({ size: "50%", mode: "x" })],
    [/'size' is missing/, () => image.scale()],
    [/'size' must be a size/, () => image.scale({ size: "half" })],
    [/no argument 'now'/, () => image.invert({ now: 1 })],
    [/leaves the image/, () => image.crop({ left: 0, top: 0, right: 9, bottom: 1 })],
    [/no kernel/, () => image.kernel({ name: "none" })],
    [/try gray/, () => image.pseudocolor({ ramp: "fire" })],
    [/'points' must be levels/, () => image.curve({ points: [[9, 0], [9, 255]] })],
    [/'points' must be levels/, () => image.apply("curve=0:0/:255")],
    [/no argument 'q'/, () => image.apply("rotate=q=3")],
    [/given twice/, () => image.apply("rotate=3,degrees=3")],
    [/rows of equal length/, () => image.kernel({ name: { weights: [[1], [1, 2]] } })],
    [/no step/, () => image.apply("invert", "nonsense")],
    [/are not 3 bytes/, () => Image.fromPixels(new Uint8Array(3), 1, 1)],
  ]) {
    assert.throws(call, (error) => error instanceof OmbriloError && reason.test(error.message));
  }
  assert.deepEqual(image.toPixels(), before);
  image.gammacorrection({ gamma: 1 }).scale({ size: "100%" }).rotate({ degrees: 360 });
  assert.deepEqual(image.toPixels(), before);
});

test("memory is released", () => {
  // More than a module can hold at once.
  for (let i = 0; i < 60; ++i) {
    const image = new Image(5000, 5000);
    image.scale({ size: "10%", mode: "point" });
    image.release();
    image.release();
    assert.throws(() => image.width, /released/);
  }
});

test("palettes, histograms, kernels and the version", () => {
  assert.equal(version, JSON.parse(readFileSync(join(process.env.PACKAGE, "package.json"))).version);
  const image = Image.fromPixels(noise(40, 30), 40, 30).neuquant({ bits: 4 });
  assert.equal(image.palette.length, 16);
  image.palette = [[1, 2, 3]];
  assert.deepEqual(image.palette[0], [1, 2, 3]);
  assert.equal(image.histogram().reduce((a, b) => a + b), 1200);
  assert.ok(kernels.includes("unsharp 5x5"));
  assert.equal(image.dpi, null);
  image.dpi = [300, 200];
  assert.deepEqual(image.copy().dpi.map(Math.round), [300, 200]);
  assert.ok(image.iscolorful() && image.can_balance() === false);

  const gray = noise(9, 7, 1);
  const moved = Image.fromPixels(gray, 9, 7, { format: "gray" })
    .kernel({ name: { weights: [[null, null, 1], [null, null, null], [null, null, null]] } });
  // Each pixel is the one to its upper right, where that is in the image with its row below.
  assert.equal(moved.toPixels("gray")[9 * 3 + 4], gray[9 * 2 + 5]);
});

test("curves are what they are drawn as", () => {
  const points = [[0, 10], [100, 180], [255, 230]];
  const curve = bestfit(points);
  const gray = noise(9, 7, 1);
  const image = Image.fromPixels(gray, 9, 7, { format: "gray" });
  assert.deepEqual([...image.copy().curve({ points }).toPixels("gray")], [...gray].map((v) => curve[v]));
  assert.deepEqual(image.copy().apply("curve=0:10/100:180/255:230").toPixels(), image.curve({ points }).toPixels());
});

// Uncompressed, so that the test needs no codec.
function readBmp(path) {
  const file = readFileSync(path);
  const [offset, width, height] = [10, 18, 22].map((at) => file.readInt32LE(at));
  const bits = file.readUInt16LE(28);
  const stride = Math.ceil((width * bits) / 32) * 4;
  const rows = [];
  for (let y = height - 1; y >= 0; --y) {
    for (let x = 0; x < width; ++x) {
      let at = offset + y * stride + x * 3;
      if (bits <= 8) {
        const byte = file[offset + y * stride + ((x * bits) >> 3)];
        const index = (byte >> (8 - bits - ((x * bits) & 7))) & ((1 << bits) - 1);
        at = 54 + 4 * index;
      }
      rows.push(file[at + 2], file[at + 1], file[at]);
    }
  }
  return Uint8ClampedArray.from(rows);
}

// The code that the playground shows, as a program of functions with a number: main() runs all of them
// on the pixels of standard input and writes what they give.
function programOf(codes, sizes, isCpp) {
  const functions = codes.map((code, i) => `static void step${i}(void) {
    const size_t result_stride = 4 * ${sizes[i][0]};
    ${code.replace(/#include.*/, "")}
    fwrite(result, result_stride, ${sizes[i][1]}, stdout);
  }`);
  return `#include <stdio.h>
    #include <ombrilo/ombrilo.${isCpp ? "hpp" : "h"}>
    enum { width = 640, height = 480, stride = 4 * width };
    static uint8_t pixels[stride * height], result[8 * stride * height];
    ${functions.join("\n")}
    int main(void) {
      if (fread(pixels, 1, sizeof pixels, stdin) != sizeof pixels) return 1;
      ${codes.map((_, i) => `step${i}();`).join(" ")}
      return 0;
    }`;
}

test("every operation gives what omb gives, and so does the code that the playground shows", async () => {
  const { callOf, codeIn } = await import(
    pathToFileURL(join(process.env.PACKAGE, "..", "playground", "code.js")));
  const folder = mkdtempSync(join(tmpdir(), "ombrilo-"));
  const [width, height] = [640, 480];
  const rgb = noise(width, height, 3);
  const head = Buffer.alloc(54);
  head.write("BM");
  head.writeInt32LE(54 + rgb.length, 2);
  head.writeInt32LE(54, 10);
  head.writeInt32LE(40, 14);
  head.writeInt32LE(width, 18);
  head.writeInt32LE(-height, 22);
  head.writeInt16LE(1, 26);
  head.writeInt16LE(24, 28);
  const bgr = Buffer.from(rgb);
  for (let i = 0; i < bgr.length; i += 3) [bgr[i], bgr[i + 2]] = [bgr[i + 2], bgr[i]];
  writeFileSync(join(folder, "in.bmp"), Buffer.concat([head, bgr]));
  const first = Image.fromPixels(rgb, width, height, { format: "rgb" });
  const build = dirname(process.env.OMB);
  const env = { ...process.env, PATH: `${build}:${process.env.PATH}` };
  const { steps } = JSON.parse(execFileSync(process.env.OMB, ["list", "--json"]));
  assert.deepEqual(operations.map((o) => o.name), steps.map((s) => s.name));

  const codes = { c: [], cpp: [] };
  const sizes = [];
  const expected = [];
  for (const operation of operations) {
    for (const example of operation.examples) {
      const image = first.copy();
      const chain = [];
      const calls = [];
      for (const text of [...(operation.depths.includes(24) ? [] : ["gray"]), example]) {
        const parsed = parseStep(text);
        const values = Object.fromEntries(parsed.operation.parameters.map(
          (p) => [p.name, parsed.given[p.name] ?? p.default]));
        chain.push({ operation: parsed.operation, values });
        calls.push(callOf(text, image));
        image.apply(text);
      }
      const command = codeIn("omb", chain, calls).replaceAll(".png", ".bmp");
      execFileSync("sh", ["-ec", command], { cwd: folder, env });
      const out = readBmp(join(folder, "out.bmp"));
      assert.ok(Buffer.from(image.toPixels("rgb")).equals(Buffer.from(out)), command);
      for (const language of ["c", "cpp"]) codes[language].push(codeIn(language, chain, calls));
      sizes.push([image.width, image.height]);
      expected.push(Buffer.from(image.toPixels()));
      if (process.env.PYTHON_PACKAGE) {
        const python = codeIn("python", chain, calls).replaceAll(".png", ".bmp");
        execFileSync("/usr/bin/python3", ["-c", python],
          { cwd: folder, env: { ...env, PYTHONPATH: process.env.PYTHON_PACKAGE } });
        const again = execFileSync(process.env.OMB, ["apply", "-q", "out.bmp", "again.bmp", "truecolor"],
          { cwd: folder });
        assert.ok(Buffer.from(out).equals(Buffer.from(readBmp(join(folder, "again.bmp")))), python + again);
      }
      image.release();
    }
  }
  const include = fileURLToPath(new URL("../../../include", import.meta.url));
  for (const [language, compiler] of [["c", ["cc", "-std=c99"]], ["cpp", ["c++", "-std=c++17"]]]) {
    const source = join(folder, `steps.${language}`);
    writeFileSync(source, programOf(codes[language], sizes, language === "cpp"));
    const [program, ...options] = compiler;
    execFileSync(program, [...options, "-Wall", "-Wextra", "-Werror", `-I${include}`, source,
      join(build, "libombrilo.a"), "-lm", "-o", join(folder, language)]);
    const result = execFileSync(join(folder, language), { input: first.toPixels(), maxBuffer: 1e9 });
    let at = 0;
    expected.forEach((pixels, i) => {
      const given = result.subarray(at, (at += pixels.length));
      assert.ok(given.equals(pixels), codes[language][i]);
    });
  }
  rmSync(folder, { recursive: true });
});
