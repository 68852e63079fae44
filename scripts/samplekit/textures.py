"""Draws the textures of the samples. All of them tile."""

import math
import random

from . import png


class Noise:
    """Smooth value noise on the unit square that tiles."""

    def __init__(self, seed, cells):
        rng = random.Random(seed)
        self.cells = cells
        self.grid = [[rng.random() for _ in range(cells)] for _ in range(cells)]

    def __call__(self, u, v):
        x, y = u * self.cells, v * self.cells
        column, row = math.floor(x), math.floor(y)
        fx, fy = x - column, y - row
        fx, fy = fx * fx * (3 - 2 * fx), fy * fy * (3 - 2 * fy)
        c0, c1 = column % self.cells, (column + 1) % self.cells
        r0, r1 = self.grid[row % self.cells], self.grid[(row + 1) % self.cells]
        low = r0[c0] * (1 - fx) + r0[c1] * fx
        high = r1[c0] * (1 - fx) + r1[c1] * fx
        return low * (1 - fy) + high * fy


def fractal(seed, cells, octaves):
    layers = [(Noise(seed + i, cells << i), 0.5 ** (i + 1)) for i in range(octaves)]
    total = sum(weight for _, weight in layers)
    return lambda u, v: sum(noise(u, v) * weight for noise, weight in layers) / total


def _palette(stops, count):
    colours = []
    for i in range(count):
        at = i / (count - 1) * (len(stops) - 1)
        low = min(int(at), len(stops) - 2)
        colours.append(tuple(round(a + (b - a) * (at - low)) for a, b in zip(stops[low], stops[low + 1])))
    return colours


def _shaded(size, stops, value, count=48):
    """An indexed image: `value(u, v)` from 0 to 1 chooses a colour between the stops."""
    pixels = bytearray()
    for y in range(size):
        for x in range(size):
            level = value(x / size, y / size)
            pixels.append(max(0, min(count - 1, int(level * count))))
    return png.encode(size, size, png.INDEXED, bytes(pixels), _palette(stops, count))


def grass():
    broad, fine = fractal(1, 3, 2), fractal(5, 24, 2)
    return _shaded(192, [(62, 96, 34), (96, 134, 46), (138, 164, 70)],
                   lambda u, v: 0.55 * broad(u, v) + 0.9 * (fine(u, v) - 0.5) + 0.22)


def marble():
    noise = fractal(11, 3, 5)
    return _shaded(192, [(168, 158, 146), (222, 214, 202), (240, 235, 226)],
                   lambda u, v: 1 - abs(math.sin(2 * math.pi * (u + 2 * v) + 7 * noise(u, v))) ** 14 * 0.8
                   - 0.35 * noise(v, u))


def wood():
    noise, grain = fractal(21, 2, 3), Noise(25, 64)

    def value(u, v):
        plank = math.floor(v * 4)
        seam = min(v * 4 - plank, plank + 1 - v * 4) < 0.03
        rings = 0.5 + 0.5 * math.sin(2 * math.pi * (3 * v + 0.25 * plank) + 9 * noise(u * 1.0, v))
        return 0.05 if seam else 0.25 + 0.4 * rings + 0.25 * (grain(u / 8, v) - 0.5) + 0.12 * (plank % 2)

    return _shaded(192, [(58, 34, 20), (116, 72, 42), (166, 112, 68)], value)


def roof_tiles():
    noise = fractal(31, 8, 2)

    def value(u, v):
        row = math.floor(v * 8)
        across = (u * 8 + 0.5 * (row % 2)) % 1 - 0.5
        along = v * 8 - row
        edge = along + 0.9 * (0.25 - across * across)
        shade = 0.35 + 0.45 * (1 - 4 * across * across) * (1 - along * 0.6)
        return (0.08 if edge < 0.2 else shade) + 0.35 * (noise(u, v) - 0.5)

    return _shaded(192, [(58, 26, 20), (150, 72, 48), (214, 126, 84)], value)


def floor_tiles():
    """Light and dark squares with a joint, 24 bits per pixel."""
    noise, size = fractal(41, 4, 4), 128
    pixels = bytearray()
    for y in range(size):
        for x in range(size):
            u, v = x / size, y / size
            joint = (u * 2) % 1 < 0.03 or (v * 2) % 1 < 0.03
            dark = (math.floor(u * 2) + math.floor(v * 2)) % 2
            base = (92, 88, 84) if joint else (70, 84, 92) if dark else (226, 218, 204)
            grain = int(noise(u, v) * 6) * 5 - 12
            pixels += bytes(max(0, min(255, part + grain)) for part in base)
    return png.encode(size, size, png.RGB, bytes(pixels))


def floor_polish():
    """Where the floor shines: 8-bit grey."""
    size = 64
    pixels = bytearray()
    for y in range(size):
        for x in range(size):
            joint = (x * 2 / size) % 1 < 0.03 or (y * 2 / size) % 1 < 0.03
            dark = (x * 2 // size + y * 2 // size) % 2
            pixels.append(10 if joint else 230 if dark else 90)
    return png.encode(size, size, png.GREY, bytes(pixels))


def lattice():
    """A leafy trellis with holes: 32 bits per pixel, alpha 0 between the leaves."""
    size, noise = 96, fractal(51, 6, 2)
    pixels = bytearray()
    for y in range(size):
        for x in range(size):
            u, v = x / size, y / size
            leaf = noise(u, v) > 0.5
            slat = (u * 3 + v * 3) % 1 < 0.14 or (u * 3 - v * 3) % 1 < 0.14
            green = int(noise(v, u) * 5) * 22
            colour = (70 + green // 2, 120 + green, 52) if leaf else (196, 178, 150)
            pixels += bytes(colour) + (b"\xff" if leaf or slat else b"\0")
    return png.encode(size, size, png.RGBA, bytes(pixels))


def glaze():
    """Rings of glaze for the vase: indexed, bands along v."""
    noise = fractal(61, 5, 3)

    def value(u, v):
        wave = v * 6 + 0.12 * math.sin(2 * math.pi * 8 * u)
        return 0.3 + 0.5 * (math.floor(wave) % 2) + 0.3 * (noise(u, v) - 0.5)

    return _shaded(128, [(20, 54, 92), (52, 124, 156), (236, 224, 196)], value)
