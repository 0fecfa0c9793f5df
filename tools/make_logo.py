#!/usr/bin/env python3
"""Draws doc/tolva.png, the logo xboard shows beside the engine's clock:
100 x 50 pixels, 8-bit RGB, the size and form of the other engines' logos.
Standard library only: python3 tools/make_logo.py doc/tolva.png"""
import struct
import sys
import zlib

WIDTH, HEIGHT = 100, 50
BACKGROUND, INK, LIGHT, DARK = (24, 44, 72), (242, 226, 186), (222, 200, 150), (120, 86, 52)

# 5 x 7 letters, one string of five bits per row.
LETTERS = {
    "T": ["11111", "00100", "00100", "00100", "00100", "00100", "00100"],
    "O": ["01110", "10001", "10001", "10001", "10001", "10001", "01110"],
    "L": ["10000", "10000", "10000", "10000", "10000", "10000", "11111"],
    "V": ["10001", "10001", "10001", "10001", "01010", "01010", "00100"],
    "A": ["01110", "10001", "10001", "11111", "10001", "10001", "10001"],
}

pixels = [[BACKGROUND] * WIDTH for _ in range(HEIGHT)]

# The name, each letter pixel drawn as a 3 x 4 block, centred above the strip.
scale_x, scale_y, gap = 3, 4, 3
left = (WIDTH - (5 * 5 * scale_x + 4 * gap)) // 2
for i, letter in enumerate("TOLVA"):
    for row, bits in enumerate(LETTERS[letter]):
        for col, bit in enumerate(bits):
            if bit == "1":
                x0 = left + i * (5 * scale_x + gap) + col * scale_x
                for y in range(3 + row * scale_y, 3 + (row + 1) * scale_y):
                    for x in range(x0, x0 + scale_x):
                        pixels[y][x] = INK

# A strip of board squares along the bottom.
square = 6
top = HEIGHT - 2 * square - 3
for y in range(top, top + 2 * square):
    for x in range(2, WIDTH - 2):
        pixels[y][x] = LIGHT if ((x - 2) // square + (y - top) // square) % 2 == 0 else DARK


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


raw = b"".join(b"\x00" + bytes(c for p in row for c in p) for row in pixels)
png = (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", WIDTH, HEIGHT, 8, 2, 0, 0, 0))
       + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))
with open(sys.argv[1] if len(sys.argv) > 1 else "doc/tolva.png", "wb") as out:
    out.write(png)
