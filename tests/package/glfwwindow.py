"""Runs the example glfw_window on an X server of its own and compares its picture with that of qt_window.

Usage: glfwwindow.py PROGRAM QT_WINDOW MODEL
"""

import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True

from commandedwindow import Window
from examplewindow import BACKGROUND, check, picture, run

SIZE = (800, 600)
# Pixels that may differ: the two windows have depths of different formats.
TOLERATED = SIZE[0] * SIZE[1] // 2000


def check_picture(program, qt_window, model, folder):
    saved = folder / "window.ppm"
    code, output = run(program, model, str(saved))
    check(code == 0, "the exit code is 0", output)
    window = Window(qt_window, folder, model)
    window.do("size %d %d" % SIZE)
    expected = window.saved("expected")
    window.end()
    check(picture(saved)[:2] == SIZE, "the picture is that of the whole window", picture(saved)[:2])
    model_pixels = sum(pixel != BACKGROUND for pixel in picture(expected)[2])
    check(model_pixels > 10_000, "the model is shown", model_pixels)
    different = sum(a != b for a, b in zip(picture(saved)[2], picture(expected)[2]))
    check(different <= TOLERATED, "both windows show the same picture", f"{different} pixels differ")


def check_failure(program, folder):
    missing = str(folder / "missing.obj")
    code, output = run(program, missing, str(folder / "none.ppm"))
    check(code == 1 and f"Failed to load OBJ file '{missing}'" in output, "a missing file is reported", output)


def main(program, qt_window, model):
    with tempfile.TemporaryDirectory() as name:
        check_picture(program, qt_window, model, pathlib.Path(name))
        check_failure(program, pathlib.Path(name))


main(*sys.argv[1:])
