"""Runs the example thumbnail, without a display, and compares its picture with a stored one.

Usage: thumbnail.py PROGRAM SOURCES MODEL PICTURE [--update]     SOURCES is the example's folder.
The stored picture is text: one line for each row, six hexadecimal digits for each pixel.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True

from examplewindow import BACKGROUND, check, pixels

SIDE = 32
MAX_MEAN_STEP = 3  # of all channels; other drivers place samples differently
VISIBLE_STEP = 24
MAX_VISIBLE_SHARE = 0.05  # of the pixels, with a channel that is further off than VISIBLE_STEP


def check_sources(folder):
    text = "".join(path.read_text() for path in sorted(folder.glob("*.cpp")) + sorted(folder.glob("*.h")))
    check("#include" in text, "the example has sources", str(folder))
    headers = re.findall(r'#include\s*[<"]([^>"]+)', text)
    check(not [name for name in headers if re.search(r"epoxy|QOpenGL|\bGL|gl\w*\.h$", name) and "velgl/" not in name],
          "no header of OpenGL is included", str(headers))
    calls = re.findall(r"\bgl[A-Z]\w*\s*\(|glEntryPoints", text)
    check(not calls, "there is no call of OpenGL", str(calls))


def run(program, *arguments):
    done = subprocess.run([program, *arguments], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=120)
    return done.returncode, done.stdout


def draw(program, model):
    with tempfile.TemporaryDirectory() as name:
        path = pathlib.Path(name) / "picture.ppm"
        code, output = run(program, model, str(path), str(SIDE))
        messages = [line for line in output.splitlines() if "Vertices Map" not in line]  # the summary of a load
        check(code == 0 and not messages, "the program draws without a warning", output)
        return pixels(path)


def check_same(drawn, stored):
    check(len(drawn) == SIDE * SIDE == len(stored), "the pictures have the same size", f"{len(drawn)}, {len(stored)}")
    steps = [[abs(a - b) for a, b in zip(*pair)] for pair in zip(drawn, stored)]
    mean = sum(map(sum, steps)) / (3 * len(steps))
    share = sum(max(step) > VISIBLE_STEP for step in steps) / len(steps)
    check(mean <= MAX_MEAN_STEP and share <= MAX_VISIBLE_SHARE, "the picture is the stored one",
          f"mean step {mean:.2f}, {share:.1%} of the pixels differ visibly")


def main(program, sources, model, picture, *options):
    check_sources(pathlib.Path(sources))
    drawn = draw(program, model)
    share = drawn.count(BACKGROUND) / len(drawn)
    check(0 < share < 0.9, "the picture shows a model before the background", f"{share:.1%} are background")
    stored = pathlib.Path(picture)
    if options == ("--update",):
        rows = [drawn[i : i + SIDE] for i in range(0, len(drawn), SIDE)]
        stored.write_text("".join(" ".join(pixel.hex() for pixel in row) + "\n" for row in rows))
    check_same(drawn, [bytes.fromhex(word) for word in stored.read_text().split()])
    for arguments in ([model], [model, "picture.ppm", "0"], ["none.obj", "picture.ppm"]):
        code, output = run(program, *arguments)
        check(code == 1, f"{arguments[1:]} fails", output)


main(*sys.argv[1:])
