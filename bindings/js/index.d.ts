import type { Operations } from "./operations.js";

export type Format = "gray" | "bgr" | "rgb" | "bgra" | "rgba";
export type Channel = "red" | "green" | "blue" | "gray";

/** A convolution kernel or a structuring element of one's own. */
export interface Kernel {
  /** Rows of whole numbers, the picture's upper row first; null leaves a pixel out. */
  weights: (number | null)[][];
  /** Added to a convolution's results. */
  bias?: number;
  /** Column and row of the pixel that receives the result; the middle without it. */
  anchor?: [number, number];
}

/** What the library refused, or an argument that is wrong. The image is as it was. */
export class OmbriloError extends Error {}

/** Pixels as canvases give and take them: red, green, blue, alpha. */
export interface Pixels {
  readonly data: Uint8ClampedArray;
  readonly width: number;
  readonly height: number;
}

/**
 * An image in the module's memory. Operations change it and return it. release() gives the memory
 * back at once; images that nobody refers to any more are released, too, in time.
 */
export interface Image extends Operations {
  readonly width: number;
  readonly height: number;
  /** Bits per pixel. */
  readonly bits: number;
  /** The color table as red, green, blue. A shorter list replaces the first entries. */
  palette: [number, number, number][];
  /** Pixels per inch, horizontally and vertically; null where they are not known. */
  dpi: [number, number] | null;
  toPixels(format?: Format): Uint8ClampedArray;
  /** In browsers an ImageData. */
  toImageData(): Pixels;
  copy(): Image;
  release(): void;
  histogram(channel?: Channel): Uint32Array;
  /** Runs steps as `omb` takes them: apply("gray", "scale=50%,bicubic"). */
  apply(...steps: string[]): this;
}

export interface ImageConstructor {
  new (width: number, height: number, bits?: number): Image;
  fromPixels(data: Uint8Array | Uint8ClampedArray, width: number, height: number,
             options?: { format?: Format; background?: string }): Image;
  fromImageData(data: Pixels, options?: { background?: string }): Image;
}

export interface Ombrilo {
  Image: ImageConstructor;
  /** Names of the built-in kernels, in the order of their numbers. */
  kernels: string[];
  version: string;
  /** The smooth curve through points that curve() applies: the output of each level. */
  bestfit(points: string | [number, number][]): Uint8Array;
  operations: object[];
}

/** Loads the module: by default ombrilo.wasm beside this file, or an address, bytes or a Module. */
export function load(source?: URL | string | BufferSource | WebAssembly.Module): Promise<Ombrilo>;
