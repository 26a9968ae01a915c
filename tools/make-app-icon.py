#!/usr/bin/env python3
"""Draws the application icon (resources/images/chromaxis.ico): a rounded tile split into a
4 x 4 grid of colours walking once round the hue circle, lighter towards the top. Written as a
classic 32-bit BMP-in-ICO at 16, 32 and 48 pixels so every image reader understands it."""
import colorsys
import struct
import sys


def pixel(x, y, size):
    r = size * 0.18
    inside = True
    for cx, cy in ((r, r), (size - 1 - r, r), (r, size - 1 - r), (size - 1 - r, size - 1 - r)):
        if (x < r and y < r and (cx, cy) == (r, r)) or (x > size - 1 - r and y < r and (cx, cy) == (size - 1 - r, r)) \
           or (x < r and y > size - 1 - r and (cx, cy) == (r, size - 1 - r)) \
           or (x > size - 1 - r and y > size - 1 - r and (cx, cy) == (size - 1 - r, size - 1 - r)):
            inside = (x - cx) ** 2 + (y - cy) ** 2 <= r * r
    if not inside:
        return (0, 0, 0, 0)
    cell = size / 4.0
    i, j = min(3, int(x / cell)), min(3, int(y / cell))
    border = max(1, size // 16)
    if (x % cell) < border * 0.5 or (y % cell) < border * 0.5:
        return (40, 40, 48, 255)
    hue = (i + 4 * j) / 16.0
    light = 0.68 - 0.12 * j
    rr, gg, bb = colorsys.hls_to_rgb(hue, light, 0.85)
    return (int(rr * 255), int(gg * 255), int(bb * 255), 255)


def bmp_entry(size):
    header = struct.pack('<IiiHHIIiiII', 40, size, size * 2, 1, 32, 0, 0, 0, 0, 0, 0)
    rows = []
    for y in reversed(range(size)):
        row = b''
        for x in range(size):
            r, g, b, a = pixel(x, y, size)
            row += bytes((b, g, r, a))
        rows.append(row)
    mask_row = ((size + 31) // 32) * 4
    mask = bytes(mask_row * size)
    return header + b''.join(rows) + mask


def main(path):
    sizes = (16, 32, 48)
    blobs = [bmp_entry(s) for s in sizes]
    out = struct.pack('<HHH', 0, 1, len(sizes))
    offset = 6 + 16 * len(sizes)
    for s, blob in zip(sizes, blobs):
        out += struct.pack('<BBBBHHII', s, s, 0, 0, 1, 32, len(blob), offset)
        offset += len(blob)
    out += b''.join(blobs)
    with open(path, 'wb') as f:
        f.write(out)


if __name__ == '__main__':
    main(sys.argv[1] if len(sys.argv) > 1 else 'resources/images/chromaxis.ico')
