"""Runs an example with a window on an X server of its own, and reads the picture that it saves."""

import re
import subprocess
import sys

BACKGROUND = bytes([38, 41, 46])  # what the examples clear the picture to

# xvfb-run has exit codes of its own, for example when its folder cannot be removed.
RUN_AND_PRINT_EXIT_CODE = 'timeout 120 "$@"; echo "exit code: $?"'


def run(program, *arguments):
    """The exit code and the output. A load that blocks the window never ends: it waits for a frame."""
    command = ["xvfb-run", "-a", "sh", "-c", RUN_AND_PRINT_EXIT_CODE, "sh", program, *arguments]
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    code = re.search(r"^exit code: (\d+)$", done.stdout, re.MULTILINE)
    check(code, "the program ran and ended", done.stdout)
    return int(code[1]), done.stdout


def picture(path):
    """The width and the height of a binary PPM picture, and its pixels, three bytes each."""
    data = path.read_bytes()
    header = re.match(rb"P6\s+(\d+)\s+(\d+)\s+255\s", data)
    width, height = int(header[1]), int(header[2])
    body = data[header.end() :]
    assert len(body) == 3 * width * height, "the picture is cut off"
    return width, height, [body[i : i + 3] for i in range(0, len(body), 3)]


def pixels(path):
    return picture(path)[2]


def check(holds, claim, output):
    if not holds:
        sys.exit(f"not so: {claim}\n{output}")
