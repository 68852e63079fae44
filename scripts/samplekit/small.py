"""The small samples: each shows one feature of real files."""

import math
import random

from . import textures
from .mesh import Mesh, lathe


def gear():
    """Two concave polygons of 80 corners, and the teeth between them."""
    teeth, mesh = 20, Mesh()
    outline = []
    for tooth in range(teeth):
        for part, radius in ((0.0, 1.55), (0.16, 2.0), (0.44, 2.0), (0.6, 1.55)):
            angle = 2 * math.pi * (tooth + part) / teeth
            outline.append((radius * math.cos(angle), radius * math.sin(angle)))
    front = [(x, y, 0.3) for x, y in outline]
    back = [(x, y, -0.3) for x, y in outline]
    mesh.use("steel")
    mesh.flat_face(front)
    mesh.flat_face(back[::-1])
    mesh.use("edge")
    for n in range(len(outline)):
        after = (n + 1) % len(outline)
        mesh.flat_face([front[n], back[n], back[after], front[after]])
    materials = ("newmtl steel\nKd 0.62 0.66 0.72\nKs 0.8 0.8 0.8\nNs 60\n"
                 "newmtl edge\nKd 0.9 0.55 0.15\nKs 0.3 0.3 0.3\nNs 20\n")
    return {"gear.obj": mesh.text("A gear: concave polygons of 80 corners", "gear.mtl").encode(),
            "gear.mtl": materials.encode()}


_SPECTRUM = [(0.82, 0.2, 0.2), (0.9, 0.45, 0.15), (0.95, 0.72, 0.2), (0.62, 0.75, 0.25), (0.25, 0.62, 0.35),
             (0.18, 0.6, 0.62), (0.2, 0.45, 0.75), (0.32, 0.32, 0.7), (0.52, 0.3, 0.68), (0.75, 0.32, 0.58),
             (0.88, 0.86, 0.8), (0.2, 0.22, 0.26)]


def mosaic():
    """Twelve materials that take turns: every tile names its material again."""
    rng, mesh, size = random.Random(12), Mesh(), 6
    for row in range(size):
        for column in range(size):
            mesh.use(f"glaze{(row * 5 + column * 7 + rng.randrange(3)) % len(_SPECTRUM)}")
            x, y, top = column - size / 2, row - size / 2, 0.3 + 0.15 * rng.random()
            low = [(x + a, y + b, 0) for a, b in ((0.03, 0.03), (0.97, 0.03), (0.97, 0.97), (0.03, 0.97))]
            high = [(x + a, y + b, top) for a, b in ((0.15, 0.15), (0.85, 0.15), (0.85, 0.85), (0.15, 0.85))]
            mesh.flat_face(high)
            for n in range(4):
                mesh.flat_face([low[n], low[(n + 1) % 4], high[(n + 1) % 4], high[n]])
    materials = "".join(f"newmtl glaze{n}\nKd {r} {g} {b}\nKs 0.5 0.5 0.5\nNs {20 + 10 * n}\n"
                        for n, (r, g, b) in enumerate(_SPECTRUM))
    return {"mosaic.obj": mesh.text("Tiles of twelve materials in turn", "mosaic.mtl").encode(),
            "mosaic.mtl": materials.encode()}


class _Bare:
    """Replaces a mesh and keeps no normals, so that the loader has to compute them."""

    def __init__(self, mesh):
        self._mesh = mesh

    def face(self, corners):
        self._mesh.face([(position, tex_coord, None) for position, tex_coord, _ in corners])


def vase():
    """Texture coordinates, but no normals."""
    mesh = Mesh()
    mesh.use("glaze")
    outside = [(0.55, 0), (0.9, 0.35), (1.1, 0.8), (1.12, 1.2), (0.95, 1.65), (0.6, 2.05), (0.4, 2.35),
               (0.38, 2.6), (0.55, 2.9)]
    lathe(_Bare(mesh), outside, 32, repeat=(2, 0.25))
    mesh.use("clay")
    lathe(_Bare(mesh), [(0.55, 2.9), (0.48, 2.9), (0.32, 2.6), (0.32, 2.3)], 32)
    materials = ("newmtl glaze\nKd 1 1 1\nKs 0.7 0.7 0.7\nNs 80\nmap_Kd glaze.png\n"
                 "newmtl clay\nKd 0.6 0.35 0.22\nKs 0.1 0.1 0.1\nNs 5\n")
    return {"vase.obj": mesh.text("A vase without normals", "vase.mtl").encode(), "vase.mtl": materials.encode(),
            "glaze.png": textures.glaze()}


def stairs():
    """Negative indices: every step counts back from its place in the file."""
    lines = ["# Spiral stairs; every face counts back from the lines before it", "mtllib stairs.mtl"]
    for step in range(24):
        a, b, y = 0.3 * step, 0.3 * step + 0.34, 0.18 * step
        for height in (y, y + 0.12):
            for angle, radius in ((a, 0.25), (a, 1.6), (b, 1.6), (b, 0.25)):
                lines.append(f"v {radius * math.cos(angle):.4f} {height:.4f} {radius * math.sin(angle):.4f}")
        if step == 0:
            lines += ["vn 0 -1 0", "vn 0 1 0"]
        lines.append(f"vn {math.sin(a):.4f} 0 {-math.cos(a):.4f}")
        lines.append(f"vn {math.cos((a + b) / 2):.4f} 0 {math.sin((a + b) / 2):.4f}")
        lines.append(f"vn {-math.sin(b):.4f} 0 {math.cos(b):.4f}")
        lines.append("usemtl " + ("oak" if step % 2 else "walnut"))
        lines += ["f -1//2 -2//2 -3//2 -4//2", "f -8//1 -7//1 -6//1 -5//1", "f -4//-3 -3//-3 -7//-3 -8//-3",
                  "f -3//-2 -2//-2 -6//-2 -7//-2", "f -2//-1 -1//-1 -5//-1 -6//-1"]
    materials = ("newmtl oak\nKd 0.72 0.53 0.32\nKs 0.2 0.2 0.2\nNs 15\n"
                 "newmtl walnut\nKd 0.4 0.26 0.17\nKs 0.2 0.2 0.2\nNs 15\n")
    return {"stairs.obj": ("\n".join(lines) + "\n").encode(), "stairs.mtl": materials.encode()}


ODDITIES = """\
\ufeff# Text as it comes: a byte-order mark, CRLF, tabs, a missing texture, statements nobody reads
o  crate
s off
mtllib oddities.mtl
\tv   -1\t-1  1 # front, lower left
v 1 -1 1 1.0
v 1 1e0 1.
v -1 +1 1
v -1 -1 -1
v 1 -1 -1
v 1 1 -1
v -1 1 -1
v 0 2.2 one
vt 0 0
vt 1 0 0
vt 1 1
vt 0 1
g side lid
usemtl Bo\u00eete
f 1/1 2/2 3/3 4/4   # the front
f 6/1/ 5/2/ 8/3/ 7/4/
f 2/1 6/2 7/3 3/4
f 5/1 1/2 4/3 8/4
usemtl plain
f 6 2 1 5
f 4/ 3/ 9/
f 3 7 9
f 7 8 9 #
f 8 4 9#
f 1 two 3
f 1 2
l 1 2
curv 0 1 1 2
usemtl nowhere
f 1 3 6
"""

ODDITIES_MATERIALS = """\
  # The first texture does not exist, the second keyword does not either
newmtl Bo\u00eete
\tKd 0.8\t0.6 0.4 # cardboard
Kd 1 1
Tr 0.5
map_Kd gone/missing.png
newmtl plain
Kd 0.35 0.5 0.65
illum 2
"""


def oddities():
    return {"oddities.obj": ODDITIES.replace("\n", "\r\n").encode(),
            "oddities.mtl": ODDITIES_MATERIALS.replace("\n", "\r\n").encode()}


SAMPLES = {"gear": gear, "mosaic": mosaic, "vase": vase, "stairs": stairs, "oddities": oddities}
