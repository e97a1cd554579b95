// Pictures to try, drawn here: a photographed page with a shadow, and a landscape.

function noisy(context, width, height, amount) {
  const image = context.getImageData(0, 0, width, height);
  let seed = 1;
  for (let i = 0; i < image.data.length; ++i) {
    if (i % 4 === 3) continue;
    seed = (Math.imul(seed, 1664525) + 1013904223) >>> 0;
    image.data[i] += ((seed >>> 16) / 65536 - 0.5) * amount;
  }
  context.putImageData(image, 0, 0);
}

function page(context) {
  const [width, height] = [900, 1200];
  Object.assign(context.canvas, { width, height });
  context.fillStyle = "#efe9da";
  context.fillRect(0, 0, width, height);
  context.fillStyle = "#2a2622";
  context.font = "bold 46px Georgia, 'DejaVu Serif', serif";
  context.fillText("The care of old paper", 90, 150);
  context.font = "25px Georgia, 'DejaVu Serif', serif";
  const words = ("A page that was photographed by hand is never lit evenly. The shadow of the " +
    "one who took it falls across the text, the paper is yellow and the ink has faded. What a " +
    "reader wants is black on white, and nothing in between that does not belong there. ").repeat(4);
  let line = "";
  let y = 225;
  for (const word of words.split(" ")) {
    if (context.measureText(line + word).width > 710) {
      context.fillText(line, 90, y);
      line = "";
      y += 38;
    }
    line += word + " ";
  }
  context.fillText(line, 90, y);
  context.fillStyle = "#a8322a";
  context.fillRect(90, y + 40, 150, 60);
  context.fillStyle = "#2c5a8c";
  context.fillRect(260, y + 40, 150, 60);
  const shadow = context.createLinearGradient(0, height, width, 0);
  shadow.addColorStop(0, "rgba(40, 34, 30, .72)");
  shadow.addColorStop(0.55, "rgba(60, 52, 44, .25)");
  shadow.addColorStop(1, "rgba(60, 52, 44, 0)");
  context.fillStyle = shadow;
  context.fillRect(0, 0, width, height);
  noisy(context, width, height, 22);
}

function photo(context) {
  const [width, height] = [1280, 853];
  Object.assign(context.canvas, { width, height });
  const sky = context.createLinearGradient(0, 0, 0, height);
  for (const [at, color] of [[0, "#274a78"], [0.35, "#7f9fc4"], [0.55, "#f2c9a0"], [0.6, "#f6e3c6"]]) {
    sky.addColorStop(at, color);
  }
  context.fillStyle = sky;
  context.fillRect(0, 0, width, height);
  const sun = context.createRadialGradient(900, 400, 10, 900, 400, 260);
  sun.addColorStop(0, "rgba(255, 248, 220, 1)");
  sun.addColorStop(0.15, "rgba(255, 236, 180, .8)");
  sun.addColorStop(1, "rgba(255, 220, 150, 0)");
  context.fillStyle = sun;
  context.fillRect(0, 0, width, height);
  ["#8497ad", "#5c7489", "#3a5560", "#24403c", "#16291f"].forEach((color, ridge) => {
    context.fillStyle = color;
    context.beginPath();
    context.moveTo(0, height);
    for (let x = 0; x <= width; x += 4) {
      const y = 430 + ridge * 75 + 60 * Math.sin(x / (190 - 20 * ridge) + ridge * 2.1) +
        22 * Math.sin(x / 47 + ridge) + 8 * Math.sin(x / 11 + 3 * ridge);
      context.lineTo(x, y);
    }
    context.lineTo(width, height);
    context.fill();
  });
  noisy(context, width, height, 16);
}

/** Draws a sample onto a canvas' context, which takes its size. */
export function drawSample(name, context) {
  ({ page, photo })[name](context);
}
