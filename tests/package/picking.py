"""Clicks at the two halves of a model in the example picking, and checks which of them its pictures highlight.

Usage: picking.py PROGRAM
"""

import collections
import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True

from examplewindow import BACKGROUND, check, pixels, run

# A square across the view, whose left half is red and whose right half is blue.
MODEL = """mtllib halves.mtl
v -1 -1 0
v 0 -1 0
v 1 -1 0
v -1 1 0
v 0 1 0
v 1 1 0
usemtl red
f 1 2 5 4
usemtl blue
f 2 3 6 5
"""
MATERIALS = "newmtl red\nKd 1 0 0\nnewmtl blue\nKd 0 0 1\n"
WIDTH, HEIGHT = 800, 600
RED, BLUE, SELECTED = bytes([204, 0, 0]), bytes([0, 0, 204]), bytes([255, 153, 0])


def picture_after_click(program, folder, x, y):
    picture = folder / "picked.ppm"
    code, output = run(program, str(folder / "halves.obj"), str(picture), str(x), str(y))
    check(code == 0, "the exit code is 0", output)
    return pixels(picture), output


def centre_of(colours, colour):
    places = [i for i, pixel in enumerate(colours) if pixel == colour]
    middle = places[len(places) // 2]
    return middle % WIDTH, middle // WIDTH


def check_shown(shown, expected):
    """Each colour covers a part of the picture, and there are no others."""
    counts = collections.Counter(shown)
    check(set(counts) == expected, f"the colours are {expected}", counts.most_common(5))
    check(min(counts.values()) > WIDTH * HEIGHT // 50, "each covers a part of the picture", counts)


def main(program):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "halves.obj").write_text(MODEL)
        (folder / "halves.mtl").write_text(MATERIALS)
        unselected, output = picture_after_click(program, folder, 1, 1)
        check("Hit" not in output, "a click beside the model hits nothing", output)
        check_shown(unselected, {BACKGROUND, RED, BLUE})
        for material, colour, other in (("red", RED, BLUE), ("blue", BLUE, RED)):
            shown, output = picture_after_click(program, folder, *centre_of(unselected, colour))
            check(f'Hit "{material}"' in output, f"the click hits {material}", output)
            check_shown(shown, {BACKGROUND, SELECTED, other})
            changed = [new for old, new in zip(unselected, shown) if old == colour]
            check(set(changed) == {SELECTED}, f"all of {material} is highlighted", collections.Counter(changed))


main(*sys.argv[1:])
