"""Runs the example instances on an X server of its own and compares its picture, tile by tile.

Usage: instances.py PROGRAM
"""

import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True

from examplewindow import BACKGROUND, check, pixels, run

SIDE = 100  # tiles in a row
CELL = 8  # pixels of a tile with its margin
TURNED_ROWS = 10  # by 45 degrees


def is_close(pixel, expected):
    return all(abs(a - b) <= 1 for a, b in zip(pixel, expected))


def main(program):
    with tempfile.TemporaryDirectory() as name:
        picture = pathlib.Path(name) / "tiles.ppm"
        code, output = run(program, str(picture))
        check(code == 0, "the exit code is 0", output)
        shown = pixels(picture)
    width = SIDE * CELL
    check(len(shown) == width * width, f"the picture has {width} x {width} pixels", output)
    for row in range(SIDE):
        for column in range(SIDE):
            # Row 0 is at the bottom. The tile covers pixels 1 to 6 of its cell; (1, 1) lies outside if it is turned.
            top = (SIDE - 1 - row) * CELL
            colour = (255 * column / 99, 255 * row / 99, 0.6 * 255)
            centre = shown[(top + 4) * width + column * CELL + 4]
            check(is_close(centre, colour), f"tile {column} of row {row} has its colour", f"{tuple(centre)}")
            corner = shown[(top + 1) * width + column * CELL + 1]
            expected = BACKGROUND if row < TURNED_ROWS else colour
            check(is_close(corner, expected), f"tile {column} of row {row} is turned as expected", f"{tuple(corner)}")


main(*sys.argv[1:])
