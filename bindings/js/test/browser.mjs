// The package and the playground in Chromium: browser.mjs FOLDER, where FOLDER holds the playground.
// Screenshots go to FOLDER/../screenshots.
import assert from "node:assert/strict";
import { mkdirSync, readFileSync } from "node:fs";
import { createServer } from "node:http";
import { createRequire } from "node:module";
import { extname, join, normalize } from "node:path";
import { pathToFileURL } from "node:url";

const folder = process.argv[2];
const shots = join(folder, "..", "screenshots");
mkdirSync(shots, { recursive: true });
// Installed beside the results, not in the sources.
const { chromium } = createRequire(join(folder, "..", "modules", "package.json"))("playwright-core");

const types = { ".html": "text/html", ".js": "text/javascript", ".css": "text/css" };
const server = createServer((request, response) => {
  try {
    const path = normalize(new URL(request.url, "http://x").pathname).replace(/\/$/, "/index.html");
    // The module goes out as bytes: nothing has to be set up for its type.
    const type = types[extname(path)] ?? "application/octet-stream";
    response.writeHead(200, { "Content-Type": type }).end(readFileSync(join(folder, path)));
  } catch {
    response.writeHead(404).end();
  }
});
await new Promise((done) => server.listen(0, "127.0.0.1", done));
const address = `http://127.0.0.1:${server.address().port}/`;
const browser = await chromium.launch({
  executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium", args: ["--no-sandbox"],
});

async function open(options) {
  const page = await browser.newPage(options);
  const errors = [];
  page.on("pageerror", (error) => errors.push(String(error)));
  page.on("console", (message) => message.type() === "error" && errors.push(message.text()));
  await page.goto(address + (options.hash ?? ""));
  await page.waitForSelector("html[data-ready]");
  return { page, errors };
}
const settled = (page) =>
  page.waitForFunction(() => / ms$/.test(document.getElementById("status").textContent));

try {
  const { page, errors } = await open({ viewport: { width: 1280, height: 860 } });

  // The package: what a canvas holds goes in and comes out as under Node.
  const steps = ["scale=60%,bicubic", "gray", "enhancepage=median,3x3"];
  const inPage = await page.evaluate(async (chain) => {
    const { load } = await import("./ombrilo/index.js");
    const { Image } = await load();
    const data = new ImageData(64, 48);
    data.data.forEach((_, i) => (data.data[i] = i % 4 === 3 ? 255 : (i * i) >> 7));
    const result = Image.fromImageData(data).apply(...chain).toImageData();
    return { isImageData: result instanceof ImageData, bytes: [...result.data], source: [...data.data] };
  }, steps);
  const { load } = await import(pathToFileURL(join(folder, "ombrilo", "index.js")));
  const { Image } = await load();
  const source = Uint8ClampedArray.from(inPage.source);
  const here = Image.fromPixels(source, 64, 48).apply(...steps).toPixels();
  assert.ok(inPage.isImageData);
  assert.deepEqual(inPage.bytes, [...here]);

  // A chain by clicks and keys.
  await page.click("[data-sample=page]");
  await settled(page);
  await page.keyboard.press("a");
  assert.equal(await page.evaluate(() => document.activeElement.id), "add");
  await page.keyboard.press("Escape");
  await page.selectOption("#add", "gray");
  await page.selectOption("#add", "brightnesscontrast");
  await page.selectOption("#add", "rotate");
  await page.fill("#steps li:nth-child(3) input[type=number]", "2");
  await page.waitForFunction(() => document.getElementById("after").width > 900);
  await settled(page);
  const command = await page.textContent("#code");
  assert.match(command, /omb apply in.png out.png \\\n {2}gray \\\n {2}brightnesscontrast=20,40 \\\n {2}rotate=2,bilinear$/);
  const contents = { python: "image.rotate(degrees=2", js: "image.rotate({ degrees: 2",
    c: "omb_rotate(&dib, 2, OMB_RESAMPLE_BILINEAR);", cpp: "image.rotate(2, OMB_RESAMPLE_BILINEAR);" };
  for (const [tab, text] of Object.entries(contents)) {
    await page.click(`#tab-${tab}`);
    assert.ok((await page.textContent("#code")).includes(text), tab);
  }
  await page.click("#tab-omb");
  const same = await page.evaluate(async (chain) => {
    const { load } = await import("./ombrilo/index.js");
    const { Image } = await load();
    const [source, result] = ["before", "after"].map((id) => {
      const { width, height } = document.getElementById(id);
      const copy = new OffscreenCanvas(width, height).getContext("2d");
      copy.drawImage(document.getElementById(id), 0, 0);
      return copy.getImageData(0, 0, width, height);
    });
    const expected = Image.fromImageData(source).apply(...chain).toImageData();
    return expected.width === result.width &&
      expected.data.every((byte, i) => byte === result.data[i]);
  }, ["gray", "brightnesscontrast=20,40", "rotate=2,bilinear"]);
  assert.ok(same, "the picture is the package's");
  await page.screenshot({ path: join(shots, "1280.png") });

  // A curve is drawn, taken back, and drawn again.
  await page.selectOption("#add", "curve");
  const curve = page.locator(".points canvas");
  await curve.scrollIntoViewIfNeeded();
  const box = await curve.boundingBox();
  await page.mouse.click(box.x + box.width / 2, box.y + box.height / 4);
  const drawn = await page.inputValue(".points input");
  assert.match(drawn, /^0:0\/64:40\/12[78]:19\d\/192:215\/255:255$/);
  await page.keyboard.press("Control+z");
  assert.equal(await page.inputValue(".points input"), "0:0/64:40/192:215/255:255");
  await page.keyboard.press("Control+Shift+z");
  assert.equal(await page.inputValue(".points input"), drawn);
  await page.click("#undo");
  await page.click("#undo");
  assert.equal(await page.locator("#steps li").count(), 3);

  // What fails says so at its step; the page answers while the worker is at work.
  await page.selectOption("#add", "crop");
  await page.fill("#steps li:nth-child(4) input[type=number]", "5000");
  await page.waitForSelector("#steps li.bad");
  assert.match(await page.textContent("#steps li.bad .note"), /crop/);
  await page.click("#steps li:nth-child(4) button:last-child");
  await page.selectOption("#add", "neuquant");
  const frames = await page.evaluate(async () => {
    document.querySelector("[data-sample=photo]").click();
    const view = document.getElementById("view");
    let frames = 0;
    do {
      await new Promise(requestAnimationFrame);
      frames += view.getAttribute("aria-busy") === "true";
    } while (view.getAttribute("aria-busy") === "true");
    return frames;
  });
  assert.ok(frames >= 1, "the page draws while the worker works");
  assert.deepEqual(errors, []);
  await page.close();

  // A phone in the dark, from an address that holds the chain.
  const phone = await open({ viewport: { width: 390, height: 844 }, colorScheme: "dark",
    hash: "#gray;pseudocolor%3Dfire;no%3Dsuch", isMobile: true, hasTouch: true });
  await phone.page.click("[data-sample=photo]");
  await settled(phone.page);
  assert.equal(await phone.page.locator("#steps li").count(), 2);
  await phone.page.screenshot({ path: join(shots, "390.png"), fullPage: true });
  const wide = await phone.page.evaluate(() => [...document.querySelectorAll("body *")]
    .filter((e) => e.getBoundingClientRect().right > 390.5).map((e) => e.id || e.className || e.tagName));
  assert.deepEqual(wide, []);
  assert.ok(await phone.page.evaluate(() => document.scrollingElement.scrollWidth <= 390));
  assert.deepEqual(phone.errors, []);
} finally {
  await browser.close();
  server.close();
}
console.log("the package and the playground work in Chromium");
