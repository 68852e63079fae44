"""Drives the example qt_window on an X server of its own: several models, reloads, docks and sizes, by its pictures.

Usage: qtwindow.py PROGRAM
"""

import collections
import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True

from commandedwindow import Window
from examplewindow import BACKGROUND, check, picture, pixels
from texturedsquare import check_colours, write_model

GREEN_MODEL = "mtllib green.mtl\nusemtl green\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\n"
GREEN_MATERIAL = "newmtl green\nKd 0 1 0\n"


def hues(path, part):
    """How many pixels of the left or the right half of a picture are rather red, green or blue."""
    width, _, colours = picture(path)
    half = [pixel for i, pixel in enumerate(colours) if (i % width < width // 2) == (part == "left")]
    strongest = [max(range(3), key=lambda channel: pixel[channel]) for pixel in half if pixel != BACKGROUND]
    return {"rgb"[channel] for channel in strongest}


def check_same(first, second, claim):
    check(picture(first) == picture(second), claim, [collections.Counter(pixels(path)).most_common(3) for path in (first, second)])


def check_models(window, folder):
    only = window.saved("only")
    check_colours(only)
    (folder / "green.obj").write_text(GREEN_MODEL)
    (folder / "green.mtl").write_text(GREEN_MATERIAL)
    window.do(f"add {folder / 'green.obj'}")
    both = window.saved("both")
    check(hues(both, "left") == {"r", "b"}, "the first model is on the left", hues(both, "left"))
    check(hues(both, "right") == {"g"}, "the second model is on the right", hues(both, "right"))
    return both


def check_docks(window, both):
    for command in ("float", "dock", "float", "dock"):
        window.do(command)
        window.do("size 640 480")
        shown = window.saved(command)
        check(hues(shown, "left") == hues(both, "left"), f"after '{command}' the first model is there", hues(shown, "left"))
        check(hues(shown, "right") == {"g"}, f"after '{command}' the second model is there", hues(shown, "right"))
    return shown


def check_sizes(window, docked):
    for width, height in ((320, 400), (700, 200)):
        window.do(f"size {width} {height}")
        shown = window.saved("resized")
        check(picture(shown)[:2] == (width, height), "the picture has the new size", picture(shown)[:2])
        check(hues(shown, "left") == {"r", "b"} and hues(shown, "right") == {"g"}, "both models are shown", shown)
    window.do("size 640 480")
    check_same(window.saved("again"), docked, "the old size gives the old picture")


def check_reload(window, folder, docked):
    window.do("reload")
    check_same(window.saved("unchanged"), docked, "files that did not change give the same picture")
    (folder / "green.mtl").write_text(GREEN_MATERIAL.replace("0 1 0", "1 0 0"))
    check_same(window.saved("before"), docked, "nothing changes before a reload")
    window.do("reload")
    check(hues(window.saved("reloaded"), "right") == {"r"}, "the second model has its new colour", "")
    (folder / "green.obj").unlink()
    window.do("reload")
    check(hues(window.saved("missing"), "right") == set(), "a model whose file is gone is not shown", "")
    (folder / "green.obj").write_text(GREEN_MODEL)
    window.do("reload")
    check(hues(window.saved("back"), "right") == {"r"}, "it is shown again when its file is back", "")


def main(program):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        window = Window(program, folder, str(write_model(folder)))
        both = check_models(window, folder)
        docked = check_docks(window, both)
        check_sizes(window, docked)
        check_reload(window, folder, docked)
        window.end()


main(*sys.argv[1:])
