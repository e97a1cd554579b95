#include "gallery_page.h"

namespace omb {

const char kPageHead[] = R"html(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Ombrilo gallery</title>
<style>
:root {
  color-scheme: light dark;
  --paper: #f6f5f2; --card: #fff; --ink: #23211e; --soft: #6d6860; --line: #e2ded6; --accent: #b4541f;
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #171614; --card: #211f1c; --ink: #ece8e1; --soft: #a29b90; --line: #37332e; --accent: #ef9a62;
  }
}
* { box-sizing: border-box; }
html { scroll-behavior: smooth; scroll-padding-top: 4rem; }
body {
  margin: 0; background: var(--paper); color: var(--ink);
  font: 16px/1.5 system-ui, -apple-system, "Segoe UI", "DejaVu Sans", sans-serif;
}
body > header, main { max-width: 1440px; margin: 0 auto; padding: 0 clamp(1rem, 4vw, 3rem); }
body > header { padding-top: 3rem; padding-bottom: 1.5rem; }
h1 { margin: 0; font-size: clamp(1.8rem, 4vw, 2.6rem); letter-spacing: -.02em; line-height: 1.15; }
body > header p { margin: .5rem 0 0; color: var(--soft); max-width: 46rem; }
nav {
  position: sticky; top: 0; z-index: 2; display: flex; gap: .4rem 1.6rem; overflow-x: auto;
  padding: .75rem max(clamp(1rem, 4vw, 3rem), calc((100vw - 1440px) / 2 + 3rem));
  background: var(--paper); border-bottom: 1px solid var(--line);
}
nav a { color: var(--ink); text-decoration: none; font-weight: 600; font-size: .9rem; white-space: nowrap; }
nav span { display: flex; gap: .4rem 1rem; flex: 1; }
nav .family { font-weight: 400; color: var(--soft); }
nav input {
  font: inherit; font-size: .9rem; color: inherit; background: var(--card); border: 1px solid var(--line);
  border-radius: 7px; padding: .1rem .5rem; min-width: 9rem;
}
nav a:hover { color: var(--accent); }
section { padding: 2rem 0 3rem; }
section + section { border-top: 1px solid var(--line); }
section > header { display: flex; gap: 1.5rem; align-items: flex-end; flex-wrap: wrap; }
section > header img {
  width: auto; height: auto; max-width: min(100%, 420px); max-height: 320px; display: block;
  border-radius: 10px; border: 1px solid var(--line);
}
h2 { margin: 0; font-size: 1.6rem; letter-spacing: -.01em; line-height: 1.2; overflow-wrap: anywhere; }
section > header p { margin: .35rem 0 0; color: var(--soft); }
[hidden] { display: none !important; }
h3 { margin: 2.5rem 0 1rem; font-size: .8rem; letter-spacing: .09em; text-transform: uppercase; color: var(--accent); }
.grid { display: grid; gap: 1.25rem; grid-template-columns: repeat(auto-fill, minmax(min(100%, 19rem), 1fr)); }
article {
  display: flex; flex-direction: column; min-width: 0; padding-bottom: 1rem; overflow: hidden;
  background: var(--card); border: 1px solid var(--line); border-radius: 12px;
}
article > :not(.frame) { margin-left: 1rem; margin-right: 1rem; }
.frame { position: relative; aspect-ratio: var(--shape); background: var(--line); overflow: hidden; }
.frame img { width: 100%; height: 100%; display: block; object-fit: contain; }
.before { background: var(--before) center / contain no-repeat; }
.split { --at: 50%; }
.split .before { position: absolute; inset: 0; background-size: 100% 100%; clip-path: inset(0 calc(100% - var(--at)) 0 0); }
.split::after {
  content: ""; position: absolute; inset: 0 auto 0 var(--at); width: 2px; margin-left: -1px;
  background: #fff; box-shadow: 0 0 4px #0009; pointer-events: none;
}
.split input { position: absolute; inset: 0; width: 100%; height: 100%; margin: 0; opacity: 0; cursor: ew-resize; touch-action: pan-y; }
.split:focus-within, pre:focus-visible { outline: 2px solid var(--accent); outline-offset: -2px; }
.detail img, .detail .before { image-rendering: pixelated; }
.inset .before {
  position: absolute; left: 3.5%; bottom: 5%; width: 30%; aspect-ratio: var(--shape); border-radius: 4px;
  outline: 2px solid #fff; box-shadow: 0 2px 10px #0008; background-color: #fff; transition: opacity .2s;
}
.inset:hover .before { opacity: 0; }
.refused { display: grid; place-items: center; background: none; border-bottom: 1px dashed var(--line); }
.refused p { margin: 1rem; color: var(--soft); font-size: .9rem; text-align: center; }
h4 { margin: .8rem 0 0; font-size: 1.05rem; display: flex; justify-content: space-between; align-items: baseline; gap: 1rem; overflow-wrap: anywhere; }
h4 span { font-weight: 400; font-size: .85rem; color: var(--soft); font-variant-numeric: tabular-nums; white-space: nowrap; }
article p { margin-top: .15rem; margin-bottom: .6rem; font-size: .9rem; color: var(--soft); }
pre {
  margin-top: auto; margin-bottom: 0; padding: .5rem .65rem; border-radius: 7px; cursor: copy;
  background: var(--paper); font: .78rem/1.5 ui-monospace, "DejaVu Sans Mono", monospace;
  white-space: pre-wrap; overflow-x: auto;
}
pre.copied { box-shadow: inset 0 0 0 1px var(--accent); }
footer { padding: 2rem; text-align: center; color: var(--soft); font-size: .85rem; }
</style>
</head>
<body>
<header>
<h1>Ombrilo gallery</h1>
<p>Every step on each image: the input on the left, the result on the right. Move across a picture to
compare the two; where the size changes, the input is the small picture in the corner, and what is
fine is shown on a detail. The time is that of the library's call on the full-size image.</p>
</header>
)html";

const char kPageTail[] = R"html(<footer>Made by <code>omb gallery</code>.</footer>
<script>
for (const frame of document.querySelectorAll('.split')) {
  const slider = frame.querySelector('input');
  const show = (percent) => frame.style.setProperty('--at', percent + '%');
  slider.addEventListener('input', () => show(slider.value));
  frame.addEventListener('pointermove', (event) => {
    if (event.pointerType !== 'mouse') return;
    const box = frame.getBoundingClientRect();
    show(slider.value = 100 * (event.clientX - box.left) / box.width);
  });
  frame.addEventListener('pointerleave', () => show(slider.value = 50));
}
// Pages that came by plain http have no clipboard of their own: the browser copies what is selected.
const copySelected = (element) => {
  getSelection().selectAllChildren(element);
  document.execCommand('copy');
  getSelection().removeAllRanges();
};
for (const command of document.querySelectorAll('pre')) {
  const slider = command.parentElement.querySelector('input');
  const copy = async () => {
    if (navigator.clipboard) {
      await navigator.clipboard.writeText(command.textContent);
    } else {
      copySelected(command);
    }
    command.classList.add('copied');
    setTimeout(() => command.classList.remove('copied'), 800);
  };
  command.addEventListener('click', copy);
  command.addEventListener('keydown', (event) => {
    if (event.key === 'Enter') copy();
    const step = { ArrowLeft: -10, ArrowRight: 10 }[event.key];
    if (!step || !slider) return;
    event.preventDefault();
    slider.value = Number(slider.value) + step;
    slider.dispatchEvent(new Event('input'));
  });
}
const sections = [...document.querySelectorAll('section')];
for (const link of document.querySelectorAll('.family')) {
  link.addEventListener('click', () => {
    const shown = sections.findLast((section) => section.getBoundingClientRect().top < 200);
    link.hash = link.hash.replace(/^#input\d+/, '#' + (shown || sections[0]).id);
  });
}
document.querySelector('nav input').addEventListener('input', (event) => {
  const words = event.target.value.toLowerCase().split(/\s+/);
  for (const grid of document.querySelectorAll('.grid')) {
    for (const article of grid.children) {
      const text = article.textContent.toLowerCase();
      article.hidden = !words.every((word) => text.includes(word));
    }
    grid.hidden = [...grid.children].every((article) => article.hidden);
    grid.previousElementSibling.hidden = grid.hidden;
  }
});
</script>
</body>
</html>
)html";

}  // namespace omb
