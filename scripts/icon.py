#!/usr/bin/env python3
"""Draws the program icon and writes it as resources in words: tools/ombview/icon.rc.

A disc, half in light and half in shadow, on a rounded square.
"""
import math
import pathlib
import struct
import zlib

SIZES = (16, 32, 48, 256)


def color_at(x, y):
    """Red, green, blue, alpha of a point of the unit square."""
    radius = 0.2
    dx = max(abs(x - 0.5) - (0.48 - radius), 0)
    dy = max(abs(y - 0.5) - (0.48 - radius), 0)
    if math.hypot(dx, dy) > radius:
        return (0, 0, 0, 0)
    if math.hypot(x - 0.5, y - 0.5) < 0.32:
        return (250, 250, 245, 255) if x + y < 1 else (28, 44, 66, 255)
    shade = int(24 * y)
    return (38 + shade, 122 - shade, 150 - shade, 255)


def pixels_of(size):
    """Rows from the top of (r, g, b, a), 4 x 4 samples a pixel."""
    rows = []
    for y in range(size):
        row = []
        for x in range(size):
            samples = [color_at((x + (i + .5) / 4) / size, (y + (k + .5) / 4) / size)
                       for i in range(4) for k in range(4)]
            alpha = sum(s[3] for s in samples)
            row.append(tuple(sum(s[c] * s[3] for s in samples) // max(alpha, 1) for c in range(3))
                       + (alpha // 16,))
        rows.append(row)
    return rows


def dib(size):
    rows = pixels_of(size)
    mask_row = (size + 31) // 32 * 4
    header = struct.pack('<IiiHHIIiiII', 40, size, 2 * size, 1, 32, 0, 0, 0, 0, 0, 0)
    body = b''.join(bytes((b, g, r, a)) for row in reversed(rows) for r, g, b, a in row)
    return header + body + bytes(mask_row * size)


def png(size):
    def chunk(kind, data):
        return (struct.pack('>I', len(data)) + kind + data
                + struct.pack('>I', zlib.crc32(kind + data)))
    rows = b''.join(b'\0' + bytes(v for p in row for v in p) for row in pixels_of(size))
    return (b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', struct.pack('>IIBBBBB', size, size, 8, 6, 0, 0, 0))
            + chunk(b'IDAT', zlib.compress(rows, 9)) + chunk(b'IEND', b''))


def resource(name, kind, data):
    data += bytes(len(data) % 2)
    words = ['0x%04X' % w for (w,) in struct.iter_unpack('<H', data)]
    lines = [', '.join(words[i:i + 12]) for i in range(0, len(words), 12)]
    return '%s %s\nBEGIN\n  %s\nEND\n' % (name, kind, ',\n  '.join(lines))


def main():
    text = '// The program icon in words, written by scripts/icon.py.\n'
    group = struct.pack('<HHH', 0, 1, len(SIZES))
    for number, size in enumerate(SIZES, 1):
        data = png(size) if size >= 48 else dib(size)
        text += resource(number, 3, data)  # RT_ICON
        group += struct.pack('<BBBBHHIH', size % 256, size % 256, 0, 0, 1, 32, len(data), number)
    text += resource(1, 14, group)  # RT_GROUP_ICON
    target = pathlib.Path(__file__).parent.parent / 'tools/ombview/icon.rc'
    target.write_text(text)


if __name__ == '__main__':
    main()
