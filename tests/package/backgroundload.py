"""Runs the example background_load on an X server of its own and checks its exit codes, messages and picture.

Usage: backgroundload.py PROGRAM MODEL
"""

import collections
import pathlib
import re
import sys
import tempfile

sys.dont_write_bytecode = True

from examplewindow import BACKGROUND, check, pixels, run
from texturedsquare import check_colours, write_model

LEAST_SHARE = 0.05  # of the pixels that have to show the model
LEAST_COLOURS = 20  # a loading frame has two


def check_frames(output):
    check(re.search(r"Frames drawn while loading: [1-9]", output), "frames are drawn during the load", output)


def check_load(program, model, picture):
    code, output = run(program, model, str(picture))
    check(code == 0, "a load ends with exit code 0", output)
    check_frames(output)
    colours = collections.Counter(pixels(picture))
    shown = 1 - colours[BACKGROUND] / sum(colours.values())
    summary = f"{len(colours)} colours, {shown:.0%} shown: {colours.most_common(3)}"
    check(colours[BACKGROUND] > 0, "there is background around the model", summary)
    check(shown >= LEAST_SHARE and len(colours) >= LEAST_COLOURS, "the picture shows the model", summary)


def check_textures(program, folder):
    picture = folder / "textured.ppm"
    code, output = run(program, str(write_model(folder)), str(picture))
    check(code == 0, "a load with a texture ends with exit code 0", output)
    check("Frames drawn before all textures were there: 1" in output, "a frame is drawn before the texture", output)
    check_colours(picture)


def check_failure(program, model, picture, message, *options):
    code, output = run(program, model, str(picture), *options)
    check(code == 1, "the exit code is 1", output)
    check(message in output, f"the message is: {message}", output)
    check(not picture.exists(), "no picture is saved", output)
    return output


def main(program, model):
    with tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(folder)
        check_load(program, model, folder / "loaded.ppm")
        check_textures(program, folder)
        output = check_failure(
            program, model, folder / "cancelled.ppm", f"Loading OBJ file '{model}' was cancelled", "--cancel"
        )
        check_frames(output)
        missing = str(folder / "missing.obj")
        check_failure(program, missing, folder / "failed.ppm", f"Failed to load OBJ file '{missing}'")


main(*sys.argv[1:])
