"""Runs the example qt_window on an X server of its own and checks that its picture has the colours of a texture.

Usage: qtwindow.py PROGRAM
"""

import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True

from examplewindow import check, run
from texturedsquare import check_colours, write_model


def main(program):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        picture = folder / "window.ppm"
        code, output = run(program, str(write_model(folder)), str(picture))
        check(code == 0, "the exit code is 0", output)
        check_colours(picture)


main(*sys.argv[1:])
