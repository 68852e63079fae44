"""Runs the program of the document with a green square, and compares its picture.

Usage: check.py PROGRAM
"""

import pathlib
import subprocess
import sys
import tempfile

SIDE = 256
BLACK, GREEN = bytes([0, 0, 0]), bytes([0, 255, 0])

with tempfile.TemporaryDirectory() as name:
    folder = pathlib.Path(name)
    (folder / "square.obj").write_text("mtllib square.mtl\nusemtl green\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\n")
    (folder / "square.mtl").write_text("newmtl green\nKd 0 1 0\n")
    subprocess.run([sys.argv[1], folder / "square.obj", folder / "square.ppm"], check=True)
    body = (folder / "square.ppm").read_bytes()[-3 * SIDE * SIDE :]

# The square is 2 wide at a distance of 3 times its half diagonal, seen at an angle of 40 degrees.
HALF = SIDE / 2 / (3 * 2**0.5 * 0.36397)
for y in range(SIDE):
    for x in range(SIDE):
        distance = max(abs(x + 0.5 - SIDE / 2), abs(y + 0.5 - SIDE / 2))
        pixel = body[3 * (y * SIDE + x) :][:3]
        if abs(distance - HALF) > 1 and pixel != (GREEN if distance < HALF else BLACK):
            sys.exit(f"the pixel {x}, {y} is {pixel.hex()}")
