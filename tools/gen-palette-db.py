#!/usr/bin/env python3
"""Writes resources/texts/db.txt, the built-in palette collection.

    tools/gen-palette-db.py [GIMP_PALETTE_DIR] [--output FILE]

One palette a line: "subset/name;" then six lower-case hex digits a colour, then ";", lines ended by
"\\r\\n". The output depends on nothing but this script and the GIMP palette folder, so running it
twice gives the same bytes.

Where the palettes come from:
  kestil96  colour sets of classic computers and consoles, written down here from their published
            definitions (hardware levels, data sheets, technical notes); each table names its source.
  gimp      the .gpl palettes of Debian's gimp-data package (default folder
            /usr/share/gimp/2.0/palettes). gimp-data is distributed under the GIMP's licence, GPL-3
            or later (debian/copyright, "Files: *"); the palettes are copied unchanged, in file-name
            order. Without the folder the subset is left out with a warning; the committed db.txt
            keeps the build independent of the package.
  fractint  256-entry cyclic gradients for escape-time fractals, generated here from cosine, HSV and
            piecewise-linear ramps with a fixed-seed generator.
  orvane    rainbows, grey ramps and single-hue ramps, generated here.
  drabet    two-colour (duotone) ramps, generated here.
  plimsy    three-colour (tritone) ramps, diverging maps and visible-spectrum maps, generated here.
"""

import argparse
import colorsys
import math
import os
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
DEFAULT_OUTPUT = os.path.join(ROOT, "resources", "texts", "db.txt")
DEFAULT_GIMP_DIR = "/usr/share/gimp/2.0/palettes"


# --- helpers -------------------------------------------------------------------------------------


def byte(x):
    """A channel in 0..1 as a byte, rounded half up and clamped."""
    return max(0, min(255, int(math.floor(x * 255.0 + 0.5))))


def rgbf(r, g, b):
    return (byte(r), byte(g), byte(b))


def hexes(text):
    """'0f380f 306230' -> [(15, 56, 15), (48, 98, 48)]"""
    out = []
    for word in text.split():
        out.append((int(word[0:2], 16), int(word[2:4], 16), int(word[4:6], 16)))
    return out


def hsv(h, s, v):
    return rgbf(*colorsys.hsv_to_rgb(h % 1.0, s, v))


def to_linear(c):
    c /= 255.0
    return c / 12.92 if c <= 0.04045 else ((c + 0.055) / 1.055) ** 2.4


def from_linear(c):
    c = max(0.0, min(1.0, c))
    return byte(c * 12.92 if c <= 0.0031308 else 1.055 * c ** (1 / 2.4) - 0.055)


def ramp(stops, n, cyclic=False, linear_light=False):
    """n colours along the byte colours in stops, evenly spaced. A cyclic ramp returns to its first
    stop after the last, so entry n would equal entry 0."""
    keys = list(stops) + ([stops[0]] if cyclic else [])
    segments = len(keys) - 1
    out = []
    for i in range(n):
        t = i / n if cyclic else (i / (n - 1) if n > 1 else 0.0)
        pos = t * segments
        k = min(int(pos), segments - 1)
        f = pos - k
        a, b = keys[k], keys[k + 1]
        if linear_light:
            out.append(tuple(from_linear(to_linear(a[c]) * (1 - f) + to_linear(b[c]) * f) for c in range(3)))
        else:
            out.append(tuple(byte((a[c] * (1 - f) + b[c] * f) / 255.0) for c in range(3)))
    return out


class Rng:
    """A 64-bit xorshift generator, so that the output never depends on Python's own generator."""

    def __init__(self, seed):
        self.state = seed & 0xFFFFFFFFFFFFFFFF or 1

    def next(self):
        x = self.state
        x ^= (x << 13) & 0xFFFFFFFFFFFFFFFF
        x ^= x >> 7
        x ^= (x << 17) & 0xFFFFFFFFFFFFFFFF
        self.state = x
        return x

    def uniform(self, lo=0.0, hi=1.0):
        return lo + (hi - lo) * (self.next() >> 11) / float(1 << 53)

    def integer(self, lo, hi):
        """lo..hi inclusive"""
        return lo + self.next() % (hi - lo + 1)


HUES = [  # name, hue in turns
    ("red", 0 / 12), ("orange", 1 / 12), ("yellow", 2 / 12), ("chartreuse", 3 / 12),
    ("green", 4 / 12), ("spring", 5 / 12), ("cyan", 6 / 12), ("azure", 7 / 12),
    ("blue", 8 / 12), ("violet", 9 / 12), ("magenta", 10 / 12), ("rose", 11 / 12),
]

NAMED = {  # our own picks for the two- and three-colour ramps
    "black": (0, 0, 0), "white": (255, 255, 255), "navy": (16, 24, 80), "gold": (236, 180, 40),
    "teal": (0, 112, 112), "coral": (250, 120, 96), "plum": (96, 32, 96), "lime": (176, 232, 64),
    "ink": (20, 24, 36), "cream": (250, 240, 210), "rust": (160, 64, 24), "sky": (120, 190, 240),
    "forest": (24, 72, 36), "sand": (224, 200, 150), "wine": (104, 16, 40), "peach": (252, 200, 160),
    "slate": (64, 80, 96), "mint": (180, 240, 200), "indigo": (40, 24, 120), "amber": (255, 176, 0),
    "crimson": (200, 16, 48), "ice": (220, 240, 255), "olive": (96, 100, 24), "lilac": (200, 170, 230),
    "cocoa": (72, 44, 28), "rose": (240, 140, 170), "steel": (90, 110, 140), "lemon": (250, 245, 120),
}


# --- kestil96: published colour sets ------------------------------------------------------------


def cga16():
    # IBM CGA / EGA default RGBI colours: two-thirds and one-third levels, with brown's green halved.
    return hexes("000000 0000aa 00aa00 00aaaa aa0000 aa00aa aa5500 aaaaaa "
                 "555555 5555ff 55ff55 55ffff ff5555 ff55ff ffff55 ffffff")


def ega64():
    # IBM EGA: six colour bits rgbRGB, upper-case two thirds and lower-case one third of full level.
    out = []
    for i in range(64):
        def level(primary_bit, secondary_bit):
            return 0xAA * ((i >> primary_bit) & 1) + 0x55 * ((i >> secondary_bit) & 1)
        out.append((level(2, 5), level(1, 4), level(0, 3)))
    return out


def vga_mode13h():
    # The VGA BIOS default DAC table of mode 13h, 6-bit levels scaled by 255 / 63: the 16 CGA colours,
    # 16 greys, then three values x three saturations of a 24-step hue circle, then 8 blacks.
    def six(v):
        return int(math.floor(v * 255 / 63 + 0.5))

    out = [(six(r), six(g), six(b)) for r, g, b in
           [(0, 0, 0), (0, 0, 42), (0, 42, 0), (0, 42, 42), (42, 0, 0), (42, 0, 42), (42, 21, 0), (42, 42, 42),
            (21, 21, 21), (21, 21, 63), (21, 63, 21), (21, 63, 63), (63, 21, 21), (63, 21, 63), (63, 63, 21),
            (63, 63, 63)]]
    for g in (0, 5, 8, 11, 14, 17, 20, 24, 28, 32, 36, 40, 45, 50, 56, 63):
        out.append((six(g), six(g), six(g)))
    blocks = [(0, 16, 31, 47, 63), (31, 39, 47, 55, 63), (45, 49, 54, 58, 63),
              (0, 7, 14, 21, 28), (14, 17, 21, 24, 28), (20, 22, 24, 26, 28),
              (0, 4, 8, 12, 16), (8, 10, 12, 14, 16), (11, 12, 13, 15, 16)]
    # The hue circle from blue through magenta, red, yellow, green and cyan, as level indexes.
    circle = [(0, 0, 4), (1, 0, 4), (2, 0, 4), (3, 0, 4), (4, 0, 4), (4, 0, 3), (4, 0, 2), (4, 0, 1),
              (4, 0, 0), (4, 1, 0), (4, 2, 0), (4, 3, 0), (4, 4, 0), (3, 4, 0), (2, 4, 0), (1, 4, 0),
              (0, 4, 0), (0, 4, 1), (0, 4, 2), (0, 4, 3), (0, 4, 4), (0, 3, 4), (0, 2, 4), (0, 1, 4)]
    for levels in blocks:
        for r, g, b in circle:
            out.append((six(levels[r]), six(levels[g]), six(levels[b])))
    out += [(0, 0, 0)] * 8
    return out


def c64():
    # Commodore 64 VIC-II colours as commonly published (Philip "Pepto" Timmermann's measurements).
    return hexes("000000 ffffff 68372b 70a4b2 6f3d86 588d43 352879 b8c76f "
                 "6f4f25 433900 9a6759 444444 6c6c6c 9ad284 6c5eb5 959595")


def zx_spectrum():
    # Sinclair ZX Spectrum: black, blue, red, magenta, green, cyan, yellow, white at the usual 0xd7
    # level, then the same at full level (BRIGHT).
    normal = [(0xD7 * ((i >> 1) & 1), 0xD7 * ((i >> 2) & 1), 0xD7 * (i & 1)) for i in range(8)]
    bright = [(0xFF * ((i >> 1) & 1), 0xFF * ((i >> 2) & 1), 0xFF * (i & 1)) for i in range(8)]
    return normal + bright


def nes():
    # Nintendo NES/Famicom 2C02, the 64-entry RGB rendition as widely published, $00 to $3F.
    return hexes(
        "7c7c7c 0000fc 0000bc 4428bc 940084 a80020 a81000 881400 503000 007800 006800 005800 004058 000000 000000 000000 "
        "bcbcbc 0078f8 0058f8 6844fc d800cc e40058 f83800 e45c10 ac7c00 00b800 00a800 00a844 008888 000000 000000 000000 "
        "f8f8f8 3cbcfc 6888fc 9878f8 f878f8 f85898 f87858 fca044 f8b800 b8f818 58d854 58f898 00e8d8 787878 000000 000000 "
        "fcfcfc a4e4fc b8b8f8 d8b8f8 f8b8f8 f8a4c0 f0d0b0 fce0a8 f8d878 d8f878 b8f8b8 b8f8d8 00fcfc f8d8f8 000000 000000")


def apple2():
    # Apple II lo-res colours 0..15 as the 12-bit master colour values of Apple's Apple IIgs
    # Technical Note #63 (black, deep red, dark blue, purple, dark green, dark grey, medium blue,
    # light blue, brown, orange, light grey, pink, light green, yellow, aquamarine, white).
    twelve = [0x000, 0xD03, 0x009, 0xD2D, 0x072, 0x555, 0x22F, 0x6AF,
              0x850, 0xF60, 0xAAA, 0xF98, 0x1D0, 0xFF0, 0x4F9, 0xFFF]
    return [(((v >> 8) & 15) * 17, ((v >> 4) & 15) * 17, (v & 15) * 17) for v in twelve]


def msx():
    # TI TMS9918 (MSX1, ColecoVision): colours 0..15 as published for the chip; 0 is transparent and
    # shown black.
    return hexes("000000 000000 21c842 5edc78 5455ed 7d76fc d4524d 42ebf5 "
                 "fc5554 ff7978 d4c154 e6ce80 21b03b c95bba cccccc ffffff")


def amstrad_cpc():
    # Amstrad CPC: 27 colours, each gun off, half or full, in firmware colour order
    # (number = 9 x green + 3 x red + blue).
    levels = (0x00, 0x80, 0xFF)
    return [(levels[(n // 3) % 3], levels[n // 9], levels[n % 3]) for n in range(27)]


def atari2600_ntsc():
    # Atari 2600 TIA, NTSC: 16 hues x 8 luminances, as the widely published table gives them.
    return hexes(
        "000000 404040 6c6c6c 909090 b0b0b0 c8c8c8 dcdcdc ececec "
        "444400 646410 848424 a0a034 b8b840 d0d050 e8e85c fcfc68 "
        "702800 844414 985c28 ac783c bc8c4c cca05c dcb468 ecc878 "
        "841800 983418 ac5030 c06848 d0805c e09470 eca880 fcbc94 "
        "880000 9c2020 b03c3c c05858 d07070 e08888 eca0a0 fcb4b4 "
        "78005c 8c2074 a03c88 b0589c c070b0 d084c0 dc9cd0 ecb0e0 "
        "480078 602090 783ca4 8c58b8 a070cc b484dc c49cec d4b0fc "
        "140084 302098 4c3cac 6858c0 7c70d0 9488e0 a8a0ec bcb4fc "
        "000088 1c209c 3840b0 505cc0 6874d0 7c8ce0 90a4ec a4b8fc "
        "00187c 1c3890 3854a8 5070bc 6888cc 7c9cdc 90b4ec a4c8fc "
        "002c5c 1c4c78 386890 5084ac 689cc0 7cb4d4 90cce8 a4e0fc "
        "003c2c 1c5c48 387c64 509c80 68b494 7cd0ac 90e4c0 a4fcd4 "
        "003c00 205c20 407c40 5c9c5c 74b474 8cd08c a4e4a4 b8fcb8 "
        "143800 345c1c 507c38 6c9850 84b468 9ccc7c b4e490 c8fca4 "
        "2c3000 4c501c 687034 848c4c 9ca864 b4c078 ccd488 e0ec9c "
        "442800 644818 846830 a08444 b89c58 d0b46c e8cc7c fce08c")


def web_safe():
    # The 216 colours of the 6 x 6 x 6 cube with levels 0, 0x33, .., 0xff; red varies slowest.
    levels = [0x33 * i for i in range(6)]
    return [(r, g, b) for r in levels for g in levels for b in levels]


def mac256():
    # Apple Macintosh default 8-bit colour table: the 6 x 6 x 6 cube from white down (black left for
    # last), ten-step ramps of red, green, blue and grey without 0x00/0x33/.. levels, then black.
    cube = [0xFF, 0xCC, 0x99, 0x66, 0x33, 0x00]
    out = [(r, g, b) for r in cube for g in cube for b in cube][:-1]
    steps = [0xEE, 0xDD, 0xBB, 0xAA, 0x88, 0x77, 0x55, 0x44, 0x22, 0x11]
    out += [(v, 0, 0) for v in steps] + [(0, v, 0) for v in steps] + [(0, 0, v) for v in steps]
    out += [(v, v, v) for v in steps] + [(0, 0, 0)]
    return out


def windows16():
    # The 16 colours of the Windows default palette (also the HTML 4 basic colours, in another order).
    return hexes("000000 800000 008000 808000 000080 800080 008080 c0c0c0 "
                 "808080 ff0000 00ff00 ffff00 0000ff ff00ff 00ffff ffffff")


def windows20():
    # The 20 static colours of the Windows system palette: ten at the start, ten at the end.
    return hexes("000000 800000 008000 808000 000080 800080 008080 c0c0c0 c0dcc0 a6caf0 "
                 "fffbf0 a0a0a4 808080 ff0000 00ff00 ffff00 0000ff ff00ff 00ffff ffffff")


def html16():
    # HTML 4.01 basic colour keywords in the order the recommendation lists them.
    return hexes("000000 c0c0c0 808080 ffffff 800000 ff0000 800080 ff00ff "
                 "008000 00ff00 808000 ffff00 000080 0000ff 008080 00ffff")


def xterm256():
    # xterm's 256-colour table: its 16 default system colours, the 6 x 6 x 6 cube with levels
    # 0, 0x5f, 0x87, 0xaf, 0xd7, 0xff, and 24 greys 8 + 10 i.
    out = hexes("000000 cd0000 00cd00 cdcd00 0000ee cd00cd 00cdcd e5e5e5 "
                "7f7f7f ff0000 00ff00 ffff00 5c5cff ff00ff 00ffff ffffff")
    levels = [0, 0x5F, 0x87, 0xAF, 0xD7, 0xFF]
    out += [(r, g, b) for r in levels for g in levels for b in levels]
    out += [(8 + 10 * i,) * 3 for i in range(24)]
    return out


def master_system():
    # Sega Master System: six colour bits --BBGGRR, each gun in four even steps.
    return [(0x55 * (i & 3), 0x55 * ((i >> 2) & 3), 0x55 * ((i >> 4) & 3)) for i in range(64)]


def teletext():
    # Teletext / BBC Micro: the eight full-level combinations, in colour-code order.
    return [(0xFF * (i & 1), 0xFF * ((i >> 1) & 1), 0xFF * ((i >> 2) & 1)) for i in range(8)]


def okabe_ito():
    # Okabe and Ito, "Color Universal Design" (2008): eight colours told apart with any colour vision.
    return hexes("000000 e69f00 56b4e9 009e73 f0e442 0072b2 d55e00 cc79a7")


def rgb332():
    # Three bits of red, three of green, two of blue, scaled evenly.
    return [(byte((i >> 5) / 7), byte(((i >> 2) & 7) / 7), byte((i & 3) / 3)) for i in range(256)]


def kestil96():
    return [
        # The four greens of the original Game Boy screen, darkest first (so that index 0 is dark,
        # as in a grey image).
        ("game-boy", hexes("0f380f 306230 8bac0f 9bbc0f")),
        ("cga", cga16()),
        ("cga-mode4-palette0-low", hexes("000000 00aa00 aa0000 aa5500")),
        ("cga-mode4-palette0-high", hexes("000000 55ff55 ff5555 ffff55")),
        ("cga-mode4-palette1-low", hexes("000000 00aaaa aa00aa aaaaaa")),
        ("cga-mode4-palette1-high", hexes("000000 55ffff ff55ff ffffff")),
        ("cga-mode5-low", hexes("000000 00aaaa aa0000 aaaaaa")),
        ("cga-mode5-high", hexes("000000 55ffff ff5555 ffffff")),
        ("ega-64", ega64()),
        ("vga-256", vga_mode13h()),
        ("c64", c64()),
        ("zx-spectrum", zx_spectrum()),
        ("nes", nes()),
        ("apple-ii", apple2()),
        ("msx", msx()),
        ("amstrad-cpc", amstrad_cpc()),
        ("atari-2600-ntsc", atari2600_ntsc()),
        ("master-system", master_system()),
        ("teletext", teletext()),
        ("web-safe", web_safe()),
        ("mac-256", mac256()),
        ("windows-16", windows16()),
        ("windows-20", windows20()),
        ("html-basic", html16()),
        ("xterm-256", xterm256()),
        ("okabe-ito", okabe_ito()),
        ("rgb-332", rgb332()),
    ]


# --- gimp: palettes shipped by gimp-data ---------------------------------------------------------


def slug(text):
    out = []
    for ch in text.strip().lower():
        out.append(ch if ch.isascii() and ch.isalnum() else "-")
    s = "".join(out)
    while "--" in s:
        s = s.replace("--", "-")
    return s.strip("-")


def read_gpl(path):
    name = None
    colours = []
    with open(path, encoding="utf-8", errors="replace") as f:
        lines = f.read().splitlines()
    if not lines or lines[0].strip() != "GIMP Palette":
        raise ValueError("not a GIMP palette")
    for line in lines[1:]:
        stripped = line.strip()
        if not stripped or stripped.startswith("#"):
            continue
        if stripped.startswith("Name:"):
            name = stripped[5:].strip()
            continue
        if stripped.startswith("Columns:"):
            continue
        fields = stripped.split()
        if len(fields) < 3:
            raise ValueError("bad colour line: " + line)
        rgb = tuple(int(v) for v in fields[:3])
        if any(v < 0 or v > 255 for v in rgb):
            raise ValueError("channel out of range: " + line)
        colours.append(rgb)
    if name is None:
        name = os.path.splitext(os.path.basename(path))[0]
    return name, colours


def gimp(folder):
    if not os.path.isdir(folder):
        print("warning: %s not found; the gimp subset is left out" % folder, file=sys.stderr)
        return []
    out = []
    for file in sorted(os.listdir(folder)):
        if not file.endswith(".gpl"):
            continue
        name, colours = read_gpl(os.path.join(folder, file))
        if colours:
            out.append((slug(name), colours))
    return out


# --- fractint: cyclic gradients ------------------------------------------------------------------


def cosine_cycle(rng):
    # a + b cos(2 pi (c t + d)) a channel; whole-number c keeps the ramp cyclic.
    a = [rng.uniform(0.35, 0.65) for _ in range(3)]
    b = [rng.uniform(0.25, 0.5) for _ in range(3)]
    c = [float(rng.integer(1, 3)) for _ in range(3)]
    d = [rng.uniform(0.0, 1.0) for _ in range(3)]
    return [rgbf(*(a[k] + b[k] * math.cos(2 * math.pi * (c[k] * i / 256 + d[k])) for k in range(3)))
            for i in range(256)]


def hsv_cycle(rng):
    h0 = rng.uniform()
    turns = rng.integer(1, 3) * (1 if rng.integer(0, 1) else -1)
    vfreq = rng.integer(1, 6)
    sfreq = rng.integer(0, 3)
    vdepth = rng.uniform(0.2, 0.6)
    out = []
    for i in range(256):
        t = i / 256
        v = 1.0 - vdepth * (0.5 - 0.5 * math.cos(2 * math.pi * vfreq * t))
        s = 0.85 - 0.35 * (0.5 - 0.5 * math.cos(2 * math.pi * sfreq * t))
        out.append(hsv(h0 + turns * t, s, v))
    return out


def key_cycle(rng):
    keys = []
    for k in range(rng.integer(3, 8)):
        # Dark and light keys by turns, so that no ramp is one flat tone.
        value = rng.uniform(0.15, 0.5) if k % 2 else rng.uniform(0.65, 1.0)
        keys.append(hsv(rng.uniform(), rng.uniform(0.3, 1.0), value))
    # A dark or a light key now and then gives the bands fractal pictures are known for.
    if rng.integer(0, 1):
        keys.insert(rng.integer(0, len(keys)), (0, 0, 0) if rng.integer(0, 1) else (255, 255, 255))
    return ramp(keys, 256, cyclic=True)


def banded_cycle(rng):
    base = cosine_cycle(rng)
    bands = rng.integer(4, 16)
    depth = rng.uniform(0.3, 0.7)
    out = []
    for i, (r, g, b) in enumerate(base):
        f = 1.0 - depth * ((i * bands / 256) % 1.0)
        out.append((byte(r * f / 255), byte(g * f / 255), byte(b * f / 255)))
    return out


def fractint():
    rng = Rng(0x5EED_F4AC_7A15)
    makers = [cosine_cycle] * 32 + [hsv_cycle] * 20 + [key_cycle] * 26 + [banded_cycle] * 16
    # Interleave the kinds so that neighbouring numbers look different.
    order = []
    pools = {}
    for m in makers:
        pools.setdefault(m, 0)
        pools[m] += 1
    kinds = [cosine_cycle, key_cycle, hsv_cycle, banded_cycle]
    while any(pools.values()):
        for k in kinds:
            if pools[k]:
                order.append(k)
                pools[k] -= 1
    return [(str(n + 1), make(rng)) for n, make in enumerate(order)]


# --- orvane: rainbows and ramps ------------------------------------------------------------------


def orvane():
    out = []
    # Red through orange, yellow, green, cyan and blue to violet, full saturation and value.
    out.append(("rainbow", [hsv(0.75 * i / 255, 1.0, 1.0) for i in range(256)]))
    out.append(("rainbow-reverse", [hsv(0.75 * (255 - i) / 255, 1.0, 1.0) for i in range(256)]))
    out.append(("rainbow-cyclic", [hsv(i / 256, 1.0, 1.0) for i in range(256)]))
    out.append(("rainbow-pastel", [hsv(0.75 * i / 255, 0.45, 1.0) for i in range(256)]))
    out.append(("rainbow-muted", [hsv(0.75 * i / 255, 0.6, 0.8) for i in range(256)]))
    out.append(("rainbow-dark", [hsv(0.75 * i / 255, 1.0, 0.55) for i in range(256)]))
    out.append(("rainbow-128", [hsv(0.75 * i / 127, 1.0, 1.0) for i in range(128)]))
    out.append(("rainbow-64", [hsv(0.75 * i / 63, 1.0, 1.0) for i in range(64)]))
    out.append(("rainbow-16", [hsv(0.75 * i / 15, 1.0, 1.0) for i in range(16)]))
    # A rainbow with nearly even brightness: cosines a third of a turn apart.
    out.append(("rainbow-smooth", [rgbf(*(0.5 + 0.5 * math.cos(2 * math.pi * (0.75 * i / 255 + k / 3))
                                          for k in (0, 2, 1))) for i in range(256)]))
    out.append(("rainbow-black", [hsv(0.75 * i / 255, 1.0, min(1.0, 4 * i / 255)) for i in range(256)]))
    out.append(("rainbow-white", [hsv(0.75 * i / 255, min(1.0, 4 * (255 - i) / 255), 1.0) for i in range(256)]))
    out.append(("gray", [(i, i, i) for i in range(256)]))
    out.append(("gray-inverse", [(255 - i, 255 - i, 255 - i) for i in range(256)]))
    out.append(("gray-128", ramp([(0, 0, 0), (255, 255, 255)], 128)))
    out.append(("gray-64", ramp([(0, 0, 0), (255, 255, 255)], 64)))
    out.append(("gray-16", ramp([(0, 0, 0), (255, 255, 255)], 16)))
    out.append(("gray-cyclic", ramp([(0, 0, 0), (255, 255, 255)], 256, cyclic=True)))
    out.append(("gray-perceptual", ramp([(0, 0, 0), (255, 255, 255)], 256, linear_light=True)))
    for name, h in HUES:
        full = hsv(h, 1.0, 1.0)
        out.append(("black-" + name, ramp([(0, 0, 0), full], 256)))
        out.append((name + "-white", ramp([full, (255, 255, 255)], 256)))
        out.append(("black-" + name + "-white", ramp([(0, 0, 0), full, (255, 255, 255)], 256)))
    named_ramps = [
        ("heat", [(0, 0, 0), (200, 0, 0), (255, 160, 0), (255, 255, 120), (255, 255, 255)]),
        ("fire", [(0, 0, 0), (120, 0, 0), (230, 60, 0), (255, 200, 0), (255, 255, 200)]),
        ("ice", [(0, 0, 0), (0, 40, 140), (0, 160, 230), (160, 240, 255), (255, 255, 255)]),
        ("ocean", [(0, 10, 40), (0, 60, 120), (0, 140, 170), (120, 220, 210), (240, 255, 250)]),
        ("terrain", [(10, 30, 110), (40, 110, 200), (230, 220, 160), (80, 160, 60), (120, 90, 50),
                     (250, 250, 250)]),
        ("sunset", [(20, 10, 60), (120, 20, 100), (230, 70, 60), (255, 170, 60), (255, 240, 180)]),
        ("copper", [(0, 0, 0), (120, 60, 30), (220, 130, 80), (255, 200, 150)]),
        ("bone", [(0, 0, 0), (70, 70, 100), (150, 170, 180), (255, 255, 255)]),
        ("forest-floor", [(20, 15, 5), (70, 60, 20), (60, 110, 40), (170, 200, 90)]),
        ("lava", [(10, 0, 0), (120, 10, 0), (255, 90, 0), (255, 220, 80), (60, 10, 0)]),
        ("aurora", [(0, 10, 30), (0, 120, 90), (80, 255, 160), (160, 60, 200), (0, 10, 30)]),
        ("twilight", [(230, 220, 240), (90, 110, 200), (40, 20, 60), (200, 80, 80), (230, 220, 240)]),
        ("autumn-leaves", [(255, 0, 0), (255, 255, 0)]),
        ("winter-sea", [(0, 0, 255), (0, 255, 128)]),
        ("spring-bloom", [(255, 0, 255), (255, 255, 0)]),
        ("summer-field", [(0, 128, 102), (255, 255, 102)]),
    ]
    for name, keys in named_ramps:
        out.append((name, ramp(keys, 256)))
    return out


# --- drabet: duotones ----------------------------------------------------------------------------


DUOTONES = [
    ("navy", "gold"), ("ink", "cream"), ("teal", "coral"), ("plum", "lime"), ("rust", "sky"),
    ("forest", "sand"), ("wine", "peach"), ("slate", "mint"), ("indigo", "amber"), ("crimson", "ice"),
    ("olive", "lilac"), ("cocoa", "rose"), ("steel", "lemon"), ("black", "amber"), ("black", "sky"),
    ("black", "rose"), ("black", "mint"), ("navy", "white"), ("wine", "white"), ("forest", "white"),
    ("indigo", "peach"), ("teal", "cream"), ("plum", "gold"), ("cocoa", "ice"), ("slate", "peach"),
    ("crimson", "lemon"), ("rust", "cream"), ("olive", "sky"), ("ink", "coral"), ("navy", "coral"),
    ("forest", "lemon"), ("wine", "mint"), ("steel", "sand"), ("indigo", "mint"), ("plum", "sky"),
    ("cocoa", "sand"), ("teal", "lemon"), ("ink", "lime"), ("slate", "rose"), ("crimson", "cream"),
]


def drabet():
    out = []
    sizes = (256, 256, 128, 64)
    for i, (a, b) in enumerate(DUOTONES):
        n = sizes[i % len(sizes)]
        out.append(("%s-%s" % (a, b), ramp([NAMED[a], NAMED[b]], n, linear_light=True)))
    # The same pairs through their middle grey: darker in the middle, as a printed duotone.
    for a, b in DUOTONES[:12]:
        mid = tuple((NAMED[a][k] + NAMED[b][k]) // 4 for k in range(3))
        out.append(("%s-%s-deep" % (a, b), ramp([NAMED[a], mid, NAMED[b]], 256, linear_light=True)))
    return out


# --- plimsy: tritones, diverging and spectral maps -----------------------------------------------


TRITONES = [
    ("ink", "crimson", "cream"), ("navy", "teal", "lemon"), ("plum", "coral", "peach"),
    ("forest", "olive", "sand"), ("indigo", "rose", "ice"), ("cocoa", "rust", "gold"),
    ("slate", "steel", "white"), ("black", "wine", "peach"), ("navy", "lilac", "cream"),
    ("forest", "lime", "lemon"), ("indigo", "teal", "mint"), ("black", "rust", "amber"),
    ("wine", "coral", "ice"), ("ink", "sky", "white"), ("cocoa", "sand", "white"),
    ("plum", "gold", "cream"), ("navy", "crimson", "amber"), ("slate", "mint", "lemon"),
    ("black", "indigo", "sky"), ("olive", "amber", "cream"),
]

DIVERGING = [
    ("blue-white-red", [(40, 60, 180), (255, 255, 255), (180, 30, 40)]),
    ("teal-white-brown", [(0, 100, 100), (245, 245, 240), (130, 70, 20)]),
    ("green-white-purple", [(30, 120, 50), (250, 250, 250), (110, 40, 140)]),
    ("blue-black-orange", [(60, 160, 255), (0, 0, 0), (255, 140, 20)]),
    ("cyan-black-magenta", [(0, 230, 230), (0, 0, 0), (230, 0, 200)]),
    ("navy-cream-crimson", [NAMED["navy"], NAMED["cream"], NAMED["crimson"]]),
    ("forest-sand-wine", [NAMED["forest"], NAMED["sand"], NAMED["wine"]]),
    ("indigo-ice-rust", [NAMED["indigo"], NAMED["ice"], NAMED["rust"]]),
    ("slate-white-amber", [NAMED["slate"], (255, 255, 255), NAMED["amber"]]),
    ("teal-cream-plum", [NAMED["teal"], NAMED["cream"], NAMED["plum"]]),
]


def wavelength_rgb(nm):
    """The visible spectrum, 380..780 nm, as a piecewise-linear approximation with the ends dimmed."""
    if nm < 440:
        r, g, b = (440 - nm) / 60, 0.0, 1.0
    elif nm < 490:
        r, g, b = 0.0, (nm - 440) / 50, 1.0
    elif nm < 510:
        r, g, b = 0.0, 1.0, (510 - nm) / 20
    elif nm < 580:
        r, g, b = (nm - 510) / 70, 1.0, 0.0
    elif nm < 645:
        r, g, b = 1.0, (645 - nm) / 65, 0.0
    else:
        r, g, b = 1.0, 0.0, 0.0
    if nm < 420:
        f = 0.3 + 0.7 * (nm - 380) / 40
    elif nm > 700:
        f = 0.3 + 0.7 * (780 - nm) / 80
    else:
        f = 1.0
    return rgbf(*(max(0.0, c * f) ** 0.8 for c in (r, g, b)))


def plimsy():
    out = []
    for i, (a, b, c) in enumerate(TRITONES):
        n = 256 if i % 3 else 240
        out.append(("%s-%s-%s" % (a, b, c), ramp([NAMED[a], NAMED[b], NAMED[c]], n, linear_light=True)))
    for name, keys in DIVERGING:
        out.append((name, ramp(keys, 256, linear_light=True)))
    for n in (256, 240, 128, 64):
        name = "spectrum" if n == 256 else "spectrum-%d" % n
        out.append((name, [wavelength_rgb(380 + 400 * i / (n - 1)) for i in range(n)]))
    out.append(("spectrum-reverse", [wavelength_rgb(780 - 400 * i / 255) for i in range(256)]))
    # The spectrum bent round: violet back to red through magenta, for cyclic colouring.
    bent = [wavelength_rgb(400 + 300 * i / 215) for i in range(216)]
    out.append(("spectrum-cyclic", bent + ramp([bent[-1], (160, 0, 200), bent[0]], 42)[1:41]))
    out.append(("spectrum-dark", [tuple(v * 3 // 5 for v in wavelength_rgb(380 + 400 * i / 255))
                                  for i in range(256)]))
    return out


# --- output --------------------------------------------------------------------------------------


SUBSETS = ["fractint", "gimp", "orvane", "drabet", "plimsy", "kestil96"]


def check(subset, name, colours):
    full = subset + "/" + name
    if not name or any(ch in full for ch in ";\r\n") or name.count("/"):
        raise ValueError("bad palette name: %r" % full)
    if not colours:
        raise ValueError("empty palette: " + full)
    for c in colours:
        if len(c) != 3 or any(not isinstance(v, int) or v < 0 or v > 255 for v in c):
            raise ValueError("bad colour %r in %s" % (c, full))
    return full


def main():
    parser = argparse.ArgumentParser(description="Writes the built-in palette collection.")
    parser.add_argument("gimp_dir", nargs="?", default=DEFAULT_GIMP_DIR,
                        help="folder of GIMP .gpl palettes (default %(default)s)")
    parser.add_argument("-o", "--output", default=DEFAULT_OUTPUT, help="output file (default %(default)s)")
    args = parser.parse_args()

    content = {
        "fractint": fractint(),
        "gimp": gimp(args.gimp_dir),
        "orvane": orvane(),
        "drabet": drabet(),
        "plimsy": plimsy(),
        "kestil96": kestil96(),
    }
    lines = []
    seen = set()
    for subset in SUBSETS:
        for name, colours in content[subset]:
            full = check(subset, name, colours)
            if full in seen:
                raise ValueError("duplicate palette name: " + full)
            seen.add(full)
            lines.append(full + ";" + "".join("%02x%02x%02x" % c for c in colours) + ";\r\n")
    os.makedirs(os.path.dirname(os.path.abspath(args.output)), exist_ok=True)
    with open(args.output, "w", encoding="ascii", newline="") as f:
        f.write("".join(lines))
    counts = ", ".join("%s %d" % (s, len(content[s])) for s in SUBSETS)
    print("%s: %d palettes (%s)" % (args.output, len(lines), counts))


if __name__ == "__main__":
    main()
