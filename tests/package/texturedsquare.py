"""A square with a texture, and the check that a picture shows its colours."""

import collections

from examplewindow import BACKGROUND, check, pixels

LEAST_SHARE = 0.05  # of the pixels that have to show each colour

# A square without a colour of its own.
MODEL = """mtllib square.mtl
usemtl painted
v -1 -1 0
v 1 -1 0
v 1 1 0
v -1 1 0
vt 0 0
vt 1 0
vt 1 1
vt 0 1
f 1/1 2/2 3/3 4/4
"""
MATERIAL = "newmtl painted\nKd 1 1 1\nmap_Kd texture.ppm\n"

SIDE = 8  # of the texture: its left half is red, its right half blue
TEXTURE = b"P6\n%d %d\n255\n" % (SIDE, SIDE) + SIDE * (SIDE // 2 * b"\xff\0\0" + SIDE // 2 * b"\0\0\xff")


def write_model(folder):
    (folder / "square.obj").write_text(MODEL)
    (folder / "square.mtl").write_text(MATERIAL)
    (folder / "texture.ppm").write_bytes(TEXTURE)
    return folder / "square.obj"


def check_colours(picture):
    colours = collections.Counter(pixels(picture))
    total = sum(colours.values())
    background = colours.pop(BACKGROUND, 0)
    summary = f"{background} of {total} pixels are background; others: {colours.most_common(5)}"
    red = sum(count for (r, g, b), count in colours.items() if r > b)
    blue = sum(count for (r, g, b), count in colours.items() if b > r)
    check(background > 0, "there is background around the model", summary)
    check(min(red, blue) >= LEAST_SHARE * total, "both colours of the texture are shown", summary)
    # White light and a white material add no green to the texture.
    check(all(g == 0 for r, g, b in colours), "no colour is shown that the texture does not have", summary)
