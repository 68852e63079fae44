"""Polygons to cut: the format of the numbers, whether corners repeat, the size, a normal, the numbers."""

import math
import struct

FLAT, SPATIAL, SCALED, BITS = 0, 1, 2, 3
DISTINCT, REPEATED = 0, 3
NORMAL = bytes([0, 0, 127])

# Coordinates in pairs.
SMALL = [
    [0, 0, 1, 0, 1, 1],
    [0, 0, 1, 0, 1, 1, 0, 1],
    [0, 0, 4, 0, 4, 4, 2, 1, 0, 4],
    [0, 0, 2, 0, 4, 0, 4, 4, 0, 4],
    [0] * 12,
    [0, 0, 4, 4, 4, 0, 0, 4, 2, 6],
    [0, 0, 4, 0, 4, 4, 0, 4, 0, 0, 1, 1, 1, 2, 2, 2, 2, 1, 1, 1],
]
# Both are larger than the size from which on another search is used.
COMB = [0, -9] + [number for i in range(68) for number in (i, 8 * (i % 2))] + [68, -9]
STAR = [
    round((100 if i % 2 else 40) * part(2 * math.pi * i / 66)) for i in range(66) for part in (math.cos, math.sin)
]


def small_numbers(numbers):
    return struct.pack(f"{len(numbers)}b", *numbers)


def writings(outline):
    """One outline in every format."""
    size = bytes([len(outline)])
    flat = small_numbers([number for point in outline for number in point])
    spatial = small_numbers([number for x, y in outline for number in (x, y, (x + y) // 2)])
    fractions = struct.pack(f"{3 * len(outline)}f", *(number / 7 for x, y in outline for number in (x, y, -y)))
    yield bytes([FLAT, DISTINCT]) + size + NORMAL + flat
    yield bytes([FLAT, REPEATED]) + size + NORMAL + bytes(range(len(outline))) + flat
    yield bytes([SPATIAL, DISTINCT]) + size + NORMAL + spatial
    yield bytes([BITS, DISTINCT]) + size + NORMAL + fractions
    for exponent in (-128, -60, 60, 120):
        yield bytes([SCALED, DISTINCT]) + size + struct.pack("b", exponent) + NORMAL + spatial


def polygons():
    for numbers in SMALL + [COMB, STAR]:
        outline = list(zip(numbers[::2], numbers[1::2]))
        yield from writings(outline)
        yield from writings(outline[::-1])
    for odd in (math.inf, math.nan, -0.0, 1e-45, 3.4e38):
        numbers = [odd if i % 4 == 1 else float(i % 7) for i in range(15)]
        yield bytes([BITS, DISTINCT, 5]) + NORMAL + struct.pack("15f", *numbers)
