// In Node; in a page the same, with the pixels of a canvas: Image.fromImageData().
import { load } from "ombrilo";

const { Image } = await load();
const pixels = new Uint8Array(3 * 800 * 600).fill(255); // red, green, blue
const image = Image.fromPixels(pixels, 800, 600, { format: "rgb" });
image.gray().resize({ size: "25%" });
console.log(`${image.width} x ${image.height} pixels, the first one`,
            ...image.toPixels("rgb").subarray(0, 3));
image.release();
