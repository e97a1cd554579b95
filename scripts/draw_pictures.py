#!/usr/bin/env python3
"""Draws the pictures of docs/pictures.md: scripts/draw_pictures.py [FOLDER]"""
import pathlib
import sys

INK, SOFT, MARK, PAPER = "#222", "#999", "#c33", "#fff"
CELL = 28


class Drawing:
    def __init__(self, width, height):
        self.size = width, height
        self.parts = []

    def rect(self, x, y, width, height, fill="none", stroke=INK, line=1):
        self.parts.append(f'<rect x="{x}" y="{y}" width="{width}" height="{height}" fill="{fill}" '
                          f'stroke="{stroke}" stroke-width="{line}"/>')

    def text(self, x, y, text, size=12, fill=INK, anchor="middle"):
        self.parts.append(f'<text x="{x}" y="{y}" font-size="{size}" fill="{fill}" '
                          f'text-anchor="{anchor}">{text}</text>')

    def arrow(self, x1, y1, x2, y2, color=MARK):
        self.parts.append(f'<path d="M{x1} {y1}L{x2} {y2}" stroke="{color}" stroke-width="1.5" '
                          f'marker-end="url(#head)"/>')

    def grid(self, x, y, rows, cell=CELL, labels=None):
        """Cells in the given grays (or colors), the first row on top; labels by (column, row)."""
        for j, row in enumerate(rows):
            for i, fill in enumerate(row):
                color = fill if isinstance(fill, str) else f"rgb({fill},{fill},{fill})"
                self.rect(x + i * cell, y + j * cell, cell, cell, color, SOFT)
        for (i, j), label in (labels or {}).items():
            self.text(x + (i + 0.5) * cell, y + (j + 0.5) * cell + 4, label, 11)

    def plate(self, x, y, rows, cell):
        """Gray cells without lines."""
        for j, row in enumerate(rows):
            first = 0
            for i in range(1, len(row) + 1):
                if i == len(row) or row[i] != row[first]:
                    fill = f"rgb({row[first]},{row[first]},{row[first]})"
                    self.rect(x + first * cell, y + j * cell, (i - first) * cell, cell, fill, fill)
                    first = i

    def save(self, path):
        width, height = self.size
        path.write_text(
            f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
            f'viewBox="0 0 {width} {height}" font-family="sans-serif">\n'
            f'<defs><marker id="head" markerWidth="7" markerHeight="6" refX="6" refY="3" '
            f'orient="auto"><path d="M0 0L7 3L0 6z" fill="{MARK}"/></marker></defs>\n'
            f'<rect width="{width}" height="{height}" fill="{PAPER}"/>\n' +
            "\n".join(self.parts) + "\n</svg>\n")


def packed_dib():
    d = Drawing(680, 190)
    d.text(52, 24, "the picture")
    names = ["row 1", "row 0"]
    for j, name in enumerate(names):
        for i in range(3):
            d.rect(10 + i * CELL, 36 + j * CELL, CELL, CELL, ["#cde", "#fdc"][j], SOFT)
        d.text(114, 55 + j * CELL, name, anchor="start")
    d.text(420, 24, "the block: 3 x 2 pixels of 8 bits")
    x = 190
    for width, label, fill, offset in [
            (110, "header", "#eee", "0"), (150, "color table", "#eee", "40"),
            (66, "row 0", "#fdc", "1064"), (22, "", SOFT, "1067"), (66, "row 1", "#cde", "1068"),
            (22, "", SOFT, "1071")]:
        d.rect(x, 46, width, 36, fill)
        d.text(x + width / 2, 68, label)
        d.text(x, 98 if offset not in ("1067", "1071") else 112, offset, 10, SOFT)
        x += width
    d.text(x, 98, "1072", 10, SOFT)
    d.text(190, 138, "40 bytes", anchor="start")
    d.text(300, 138, "256 x (blue, green, red, reserved)", anchor="start")
    d.text(190, 162, "The bottom row comes first. Dark: padding to a multiple of 4 bytes.",
           anchor="start")
    return d


def kernel_offsets():
    d = Drawing(330, 215)
    labels = {(i, j): f"{i - 1},{1 - j}" for i in range(3) for j in range(3)}
    rows = [["#fff"] * 3 for _ in range(3)]
    rows[1][1] = "#fdc"
    d.grid(60, 30, rows, 44, labels)
    d.arrow(36, 165, 36, 28)
    d.text(34, 20, "dy", fill=MARK)
    d.arrow(60, 178, 198, 178)
    d.text(208, 182, "dx", fill=MARK, anchor="start")
    for j, (above, below) in enumerate([("stored row", "y + 1"), ("stored row", "y"),
                                        ("stored row", "y - 1")]):
        d.text(202, 56 + 44 * j, f"{above} {below}", 11, anchor="start")
    d.text(10, 206, "Offsets dx,dy as they lie on the picture.", anchor="start")
    return d


SIDES = ["E", "N", "W", "S", "SE", "NE", "SW", "NW"]
# omb_convolute()'s kernels 12 to 19, the row below the pixel first.
SOBEL = ["1 0 -1 2 0 -2 1 0 -1", "1 2 1 0 0 0 -1 -2 -1", "-1 0 1 -2 0 2 -1 0 1",
         "-1 -2 -1 0 0 0 1 2 1", "0 -1 -2 1 0 -1 2 1 0", "2 1 0 1 0 -1 0 -1 -2",
         "-2 -1 0 -1 0 1 0 1 2", "0 1 2 -1 0 1 -2 -1 0"]


def square(x, y):
    return 160 if 3 <= x <= 5 and 3 <= y <= 5 else 130


def relief(kernel):
    weights = [int(w) for w in kernel.split()]
    rows = []
    for y in range(1, 8):  # from the top
        row = []
        for x in range(1, 8):
            total = sum(weights[3 * (1 - dy) + dx + 1] * square(x + dx, y + dy)
                        for dy in (-1, 0, 1) for dx in (-1, 0, 1))
            row.append(max(0, min(255, total + 128)))
        rows.append(row)
    return rows


def emboss_directions():
    cell, step = 14, 126
    d = Drawing(5 * step, 2 * step + 30)
    d.plate(14, 74, [[square(x, y) for x in range(1, 8)] for y in range(1, 8)], cell)
    d.text(63, 190, "a light square")
    for i, kernel in enumerate(SOBEL):
        x, y = step + 14 + i % 4 * step, 10 + i // 4 * (step + 14)
        d.plate(x, y, relief(kernel), cell)
        d.text(x + 49, y + 116, f"{i}: lit from {SIDES[i]}")
    return d


def pixels(count, lit, cell_on="#fff", cell_off="#345"):
    return [[cell_on if (x, y) in lit else cell_off for x in range(count)] for y in range(count)]


def dilation():
    d = Drawing(640, 230)
    shape = [(0, 0), (1, 0), (0, 1)]  # dx, dy; dy is up
    x0, y0 = 1, 4
    one = {(x0, y0)}
    panels = [("one light pixel", one),
              ("omb_dilate()", {(x0 + i, y0 - j) for i in range(3) for j in range(3)}),
              ("then omb_erode()", one),
              ("dilated by the shape", {(x0 - dx, y0 + dy) for dx, dy in shape})]
    cell = 23
    for i, (title, lit) in enumerate(panels):
        x = 10 + i * 158
        d.grid(x, 30, pixels(6, lit), cell, {(x0, y0): "&#8226;"})
        d.text(x + 69, 20, title)
    d.text(10, 200, "The shape: (0, 0), (1, 0), (0, 1). A pixel becomes light where the shape, laid on "
           "it, meets a light pixel:", anchor="start")
    d.text(10, 218, "light detail grows by the shape turned around. The dot marks the pixel's place.",
           anchor="start")
    return d


def median():
    d = Drawing(460, 240)
    plus = {(0, 0)} | {p for k in (-2, -1, 1, 2) for p in ((k, 0), (0, k))}
    rows = [["#fdc" if (x - 3, y - 3) in plus else "#fff" for x in range(7)] for y in range(7)]
    for y in range(7):
        for x in range(7):
            if rows[y][x] == "#fff" and not (1 <= x <= 5 and 1 <= y <= 5):
                rows[y][x] = "#eee"
    d.grid(10, 10, rows, CELL, {(3, 3): "result"})
    d.text(220, 60, "The median of the nine marked pixels.", anchor="start")
    d.text(220, 84, "In 7 x 7 pixels only the middle one has", anchor="start")
    d.text(220, 102, "a result; the border of 3 becomes zero,", anchor="start")
    d.text(220, 120, "although the plus reaches 2.", anchor="start")
    return d


def scale_positions():
    cell = 56
    d = Drawing(640, 215)
    old = [0, 255]
    d.text(30, 52, "source", anchor="start")
    d.grid(110, 30, [old], cell, {(0, 0): "", (1, 0): ""})
    d.text(138, 62, "0", fill="#fff")
    d.text(194, 62, "255")
    d.text(30, 152, "width 8", anchor="start")
    new = [0, 63, 127, 191, 0, 63, 127, 191]
    d.grid(110, 130, [new], cell)
    for i, value in enumerate(new):
        d.text(138 + i * cell, 162, str(value), fill="#fff" if value < 128 else INK)
        d.text(138 + i * cell, 122, f"{i * 0.25:g}", 11, MARK)
    d.text(30, 122, "position", 11, MARK, anchor="start")
    d.text(30, 205, "Bilinear: from position 1 on, pixels 0 and 1 are blended again, by the fraction alone.",
           anchor="start")
    return d


def dither_shares():
    d = Drawing(460, 150)
    rows = [["#fff", "#fdc", "#fff"], ["#fff", "#fff", "#fff"]]
    d.grid(20, 20, rows, 52, {(1, 0): "pixel", (2, 0): "3/8", (1, 1): "3/8", (2, 1): "1/4"})
    d.text(190, 50, "the row being stored", 11, anchor="start")
    d.text(190, 102, "the row stored before, below it in the picture", 11, anchor="start")
    d.text(20, 142, "The last column gets nothing from the one before it.", anchor="start")
    return d


def main():
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "docs/pictures")
    folder.mkdir(parents=True, exist_ok=True)
    for draw in (packed_dib, kernel_offsets, emboss_directions, dilation, median, scale_positions,
                 dither_shares):
        draw().save(folder / (draw.__name__.replace("_", "-") + ".svg"))


if __name__ == "__main__":
    main()
