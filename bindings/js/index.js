// Ombrilo in WebAssembly: images that live in the module's memory, and every operation as a method.
//
//   import { load } from "ombrilo";
//   const { Image } = await load();
//   const image = Image.fromImageData(context.getImageData(0, 0, width, height));
//   context.putImageData(image.gray().scale({ size: "50%" }).toImageData(), 0, 0);
//   image.release();
import { OmbriloError, argumentsOf, operations, parseStep, pointsOf } from "./arguments.js";
import description from "./description.js";

export { OmbriloError };

// OmbPixels of the C header, and the bytes of a pixel.
const formats = { gray: [8, 1], bgr: [24, 3], rgb: [25, 3], bgra: [32, 4], rgba: [33, 4] };

const metresPerInch = 0.0254;

async function compile(source) {
  if (source instanceof WebAssembly.Module) return source;
  if (source instanceof ArrayBuffer || ArrayBuffer.isView(source)) {
    return WebAssembly.compile(source);
  }
  const url = source ?? new URL("./ombrilo.wasm", import.meta.url);
  if (String(url).startsWith("file:")) {
    const { readFile } = await import(/* @vite-ignore */ /* webpackIgnore: true */ "node:fs/promises");
    return WebAssembly.compile(await readFile(new URL(url)));
  }
  const response = await fetch(url);
  if (!response.ok) throw new OmbriloError(`${url}: ${response.status} ${response.statusText}`);
  // Without compileStreaming(), servers need not know the type of the file.
  return WebAssembly.compile(await response.arrayBuffer());
}

// The C library asks the system for the time, and for nothing else that matters here.
function systemOf(module, memory) {
  const system = {};
  for (const { module: from, name, kind } of WebAssembly.Module.imports(module)) {
    if (kind !== "function") continue;
    system[from] ??= {};
    system[from][name] =
      name === "clock_time_get"
        ? (id, precision, address) => {
            const now = BigInt(Math.round((performance.timeOrigin + performance.now()) * 1e6));
            new DataView(memory().buffer).setBigUint64(address, now, true);
            return 0;
          }
        : () => 52; // "not supported"
  }
  return system;
}

/** Loads the module: by default ombrilo.wasm beside this file, or an address, bytes or a Module. */
export async function load(source) {
  const module = await compile(source);
  let memory;
  const { exports: c } = await WebAssembly.instantiate(module, systemOf(module, () => memory));
  memory = c.memory;
  c._initialize?.();

  const bytesAt = (address, count) => new Uint8Array(memory.buffer, address, count);
  const wordAt = (address) => new DataView(memory.buffer).getUint32(address, true);
  const setWord = (address, word) => new DataView(memory.buffer).setUint32(address, word, true);

  function take(count) {
    const address = c.malloc(Math.max(count, 1));
    if (address === 0) throw new OmbriloError("memory ran out");
    return address;
  }
  // A copy of an array in the module's memory.
  function put(array) {
    const address = take(array.byteLength);
    bytesAt(address, array.byteLength).set(new Uint8Array(array.buffer));
    return address;
  }
  // Calls with an address of `count` bytes that lives as long as the call.
  function withMemory(count, call) {
    const address = take(count);
    try {
      return call(address);
    } finally {
      c.free(address);
    }
  }

  const kernelNames = [];
  for (let record; (record = c.omb_getKERNAL(kernelNames.length)) !== 0; ) {
    const name = bytesAt(wordAt(record + 28), 40);
    kernelNames.push(new TextDecoder().decode(name.slice(0, name.indexOf(0))).trim());
  }

  // What nobody released: memory goes when the image does.
  const forgotten = new FinalizationRegistry((block) => c.omb_freedib(block.address));

  class Image {
    #block = { address: 0 };

    /** An image of pixels 0; at 1, 4 and 8 bits with a gray ramp from black to white. */
    constructor(width, height, bits = 24) {
      if (width === undefined) return; // for those below
      this.#own(c.omb_newdib(width, height, bits), "newdib");
    }

    #own(address, name) {
      if (address === 0) throw new OmbriloError(`${name}: the library refused, or memory ran out`);
      this.release();
      this.#block = { address };
      forgotten.register(this, this.#block, this);
      return this;
    }

    /** @internal */
    get address() {
      if (this.#block.address === 0) throw new OmbriloError("the image was released");
      return this.#block.address;
    }

    static fromPixels(data, width, height, { format = "rgba", background = "#ffffff" } = {}) {
      const [number, bytes] = formats[format] ?? [0, 0];
      if (number === 0 || data.length < width * height * bytes) {
        throw new OmbriloError(
          `fromPixels: ${width} x ${height} pixels of '${format}' are not ${data.length} bytes`);
      }
      const rgb = parseInt(background.slice(1), 16);
      const color = ((rgb & 255) << 16) | (rgb & 0xff00) | (rgb >> 16);
      return withMemory(width * height * bytes, (address) => {
        bytesAt(address, width * height * bytes).set(data.subarray(0, width * height * bytes));
        const made = c.omb_frompixels(number, width, height, address, width * bytes, color);
        return new Image().#own(made, "fromPixels");
      });
    }

    static fromImageData(data, options = {}) {
      return Image.fromPixels(data.data, data.width, data.height, { ...options, format: "rgba" });
    }

    toPixels(format = "rgba") {
      const [number, bytes] = formats[format] ?? [0, 0];
      const count = this.width * this.height * bytes;
      return withMemory(count, (address) => {
        if (!c.omb_topixels(this.address, number, address, this.width * bytes)) {
          throw new OmbriloError(`toPixels: there are no pixels of '${format}'`);
        }
        return new Uint8ClampedArray(bytesAt(address, count));
      });
    }

    toImageData() {
      const { width, height } = this;
      const data = this.toPixels("rgba");
      return typeof ImageData === "undefined"
        ? { data, width, height }
        : new ImageData(data, width, height);
    }

    get width() {
      return c.omb_DIBWidth(this.address);
    }
    get height() {
      return c.omb_DIBHeight(this.address);
    }
    get bits() {
      return c.omb_DIBBitCount(this.address);
    }

    /** The color table as [red, green, blue]. A shorter list replaces the first entries. */
    get palette() {
      const count = c.omb_DIBNumColors(this.address);
      const start = c.omb_FindDIBBits(this.address) - c.omb_PaletteSize(this.address);
      const table = bytesAt(start, 4 * count);
      return Array.from({ length: count }, (_, i) => [...table.slice(4 * i, 4 * i + 3)].reverse());
    }
    set palette(colors) {
      const table = Uint8Array.from(colors.flatMap(([red, green, blue]) => [blue, green, red, 0]));
      withMemory(table.length, (address) => {
        bytesAt(address, table.length).set(table);
        if (!c.omb_setpalette(this.address, address, colors.length)) {
          throw new OmbriloError(`palette: the image does not have ${colors.length} colors`);
        }
      });
    }

    /** Pixels per inch, horizontally and vertically; null where they are not known. */
    get dpi() {
      const perMetre = [24, 28].map((at) => wordAt(this.address + at) | 0);
      return perMetre.every((n) => n > 0) ? perMetre.map((n) => n * metresPerInch) : null;
    }
    set dpi(dpi) {
      const [x, y] = (dpi ?? [0, 0]).map((d) => Math.round(d / metresPerInch));
      if (!c.omb_setresolution(this.address, x, y)) {
        throw new OmbriloError(`dpi: ${dpi} cannot be stored`);
      }
    }

    /** How often each value of red, green, blue or gray occurs. */
    histogram(channel = "gray") {
      const number = { red: 1, green: 2, blue: 3, gray: 4 }[channel];
      if (!number) throw new OmbriloError(`histogram: there is no channel '${channel}'`);
      // Counting grays changes the image.
      const image = number === 4 ? this.copy() : this;
      try {
        return withMemory(1024, (address) => {
          if (!c.omb_getchannelhistogram(image.address, address, number)) {
            throw new OmbriloError(`histogram: takes 1, 4, 8 and 24 bits per pixel`);
          }
          return new Uint32Array(memory.buffer.slice(address, address + 1024));
        });
      } finally {
        if (image !== this) image.release();
      }
    }

    copy() {
      if (this.bits !== 16 && this.bits !== 32) {
        const made = c.omb_cpydibrect(this.address, 0, 0, this.width, this.height);
        return new Image().#own(made, "copy");
      }
      const made = new Image(this.width, this.height, this.bits);
      const count = c.omb_FindDIBBits(this.address) - this.address +
        Math.ceil((this.width * this.bits) / 32) * 4 * this.height;
      bytesAt(made.address, count).set(bytesAt(this.address, count));
      return made;
    }

    /** Gives the memory back; the image cannot be used any more. */
    release() {
      if (this.#block.address === 0) return;
      forgotten.unregister(this);
      c.omb_freedib(this.#block.address);
      this.#block = { address: 0 };
    }
    [Symbol.dispose ?? Symbol("dispose")]() {
      this.release();
    }

    /** Runs steps as `omb` takes them: apply("gray", "scale=50%,bicubic"). */
    apply(...steps) {
      const parsed = steps.map(parseStep);
      for (const { operation, given } of parsed) this.#run(operation, given);
      return this;
    }

    /** @internal */
    kernelAddress(operation, given) {
      const plain = String(given).trim().toLowerCase();
      const number = /^\d+$/.test(plain)
        ? Number(plain)
        : kernelNames.findIndex((name) => name.toLowerCase() === plain);
      const address = number < 0 ? 0 : c.omb_getKERNAL(number);
      if (address === 0) throw new OmbriloError(`${operation}: there is no kernel '${given}'`);
      return address;
    }

    #isIdle(operation, values, list) {
      switch (operation.idle) {
        case "same_size":
          return list[0] === this.width && list[1] === this.height;
        case "same_depth":
          return list[0] === this.bits;
        case "full_turn":
          return Math.abs(values.degrees % 360) < 0.01;
        default:
          return false;
      }
    }

    #run(operation, given = {}) {
      const { bits, address } = this;
      if (operation.wide && (bits === 16 || bits === 32)) {
        return this.#run(operations.get(operation.wide));
      }
      if (!operation.depths.includes(bits)) {
        const before = bits === 16 || bits === 32 ? "transformat" : operation.before;
        throw new OmbriloError(
          `${operation.name}: takes ${operation.depths.join(", ")} bits per pixel, not ${bits}` +
            (before ? `; try ${before}` : ""));
      }
      const { values, list } = argumentsOf(operation, this, given);
      if (this.#isIdle(operation, values, list)) return this;
      const taken = [];
      try {
        const numbers = list.map((value) => {
          if (typeof value === "number" || typeof value === "bigint") return value;
          taken.push(put(value.words ?? value));
          for (const at of value.pointers ?? []) {
            const place = taken.at(-1) + 4 * at;
            setWord(place, wordAt(place) + taken.at(-1));
          }
          return taken.at(-1);
        });
        let status;
        if (operation.replaces) {
          taken.push(take(4));
          const holder = taken.at(-1);
          setWord(holder, address);
          status = c[operation.function](holder, ...numbers);
          this.#block.address = wordAt(holder);
        } else if (operation.function === "omb_EdgePage") {
          // A variable argument list is an address, here of nothing.
          status = c.omb_EdgePage(address, ...numbers, 0);
        } else {
          status = c[operation.function](address, ...numbers);
        }
        if (operation.result === "image") return this.#own(status, operation.name);
        if (operation.idle === "depth_tells" && bits === 24) status = this.bits === 8;
        if (operation.result === "status" && !status && operation.idle !== "always") {
          throw new OmbriloError(
            `${operation.name}: refused: an argument leaves the image, there is nothing to do, ` +
              "or memory ran out");
        }
        return this;
      } finally {
        for (const each of taken) c.free(each);
      }
    }

    static {
      for (const operation of operations.values()) {
        Image.prototype[operation.name] = function (given) {
          return this.#run(operation, given);
        };
      }
      for (const query of description.queries) {
        Image.prototype[query.name] = function () {
          const answer = c[query.function](this.address);
          return query.yes_or_no ? answer !== 0 : answer;
        };
      }
    }
  }

  /** The smooth curve through points that curve() applies: the output of each level. */
  function bestfit(points) {
    const given = put(pointsOf("bestfit", points));
    try {
      return withMemory(256, (curve) => {
        c.omb_bestfit(given, pointsOf("bestfit", points).length / 2, curve);
        return bytesAt(curve, 256).slice();
      });
    } finally {
      c.free(given);
    }
  }

  const number = c.omb_version();
  return {
    Image, bestfit, kernels: kernelNames, operations: description.operations,
    version: `${number >> 16}.${(number >> 8) & 255}.${number & 255}`,
  };
}
