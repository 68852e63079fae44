"""A garden temple on an island."""

import math
import random

from . import textures
from .mesh import Mesh, box, disc, faceted_ball, lathe, normalized, smooth_ball

MATERIALS = """\
# Materials of the garden temple
newmtl plinth
Kd 1 1 1
Ks 0.25 0.25 0.25
Ns 40
map_Kd wood.png

newmtl rim
Kd 0.62 0.6 0.57
Ks 0.1 0.1 0.1
Ns 12

newmtl sand
Kd 0.86 0.78 0.6
Ks 0 0 0
Ns 1

newmtl shallows
Kd 0.5 0.64 0.58
Ks 0 0 0
Ns 1

newmtl bed
Kd 0.4 0.52 0.5
Ks 0 0 0
Ns 1

newmtl grass
Kd 1 1 1
Ks 0 0 0
Ns 1
map_Kd grass.png

newmtl marble
Kd 1 1 1
Ks 0.3 0.3 0.3
Ns 60
map_Kd marble.png

newmtl floor
Kd 1 1 1
Ks 0.9 0.9 0.9
Ns 120
map_Kd floor.png
map_Ks polish.png

newmtl roof
Kd 1 1 1
Ks 0.15 0.12 0.1
Ns 20
map_Kd roof.png

newmtl gold
Kd 0.85 0.6 0.2
Ks 1 0.85 0.5
Ns 90

newmtl rock
Kd 0.5 0.49 0.48
Ks 0.05 0.05 0.05
Ns 8

newmtl cypress
Kd 0.2 0.36 0.2
Ks 0 0 0
Ns 1

newmtl blossom
Kd 0.93 0.6 0.68
Ks 0 0 0
Ns 1

newmtl trunk
Kd 0.36 0.25 0.18
Ks 0 0 0
Ns 1

newmtl lily
Kd 0.3 0.52 0.28
Ks 0.2 0.2 0.2
Ns 30

newmtl trellis
Kd 1 1 1
Ks 0 0 0
Ns 1
map_Kd trellis.png

newmtl water
Kd 0.1 0.42 0.55
Ks 0.9 0.95 1
Ns 200
d 0.7

newmtl glass
Kd 0.6 0.82 0.88
Ks 1 1 1
Ns 240
d 0.28
"""

WATER = 0.0
PLATEAU = 0.62
FLOOR = 1.3
COLUMNS = 12
# Materials of the ground, and the radius at which each ends.
GROUND = (("grass", 6.1), ("sand", 7.1), ("shallows", 8.3), ("bed", 20))


def _ground_height(x, z, noise):
    radius, angle = math.hypot(x, z), math.atan2(x, z)
    shore = 7.6 + 0.55 * math.sin(3 * angle + 0.6) + 0.3 * math.sin(5 * angle)
    if radius < 4.6:
        return PLATEAU
    fall = min(1.0, (radius - 4.6) / (shore + 1.6 - 4.6))
    smooth = fall * fall * (3 - 2 * fall)
    bump = 0.16 * (noise(x / 20 + 0.5, z / 20 + 0.5) - 0.5) * min(1.0, radius - 4.6)
    return PLATEAU + (-0.95 - PLATEAU) * smooth + bump


def _ground(mesh, noise):
    radii = [0, 2, 4.2, 4.6] + [4.6 + 0.4 * step for step in range(1, 19)]
    segments = 72

    def corner(ring, column):
        angle = 2 * math.pi * (column % segments) / segments
        x, z = radii[ring] * math.sin(angle), radii[ring] * math.cos(angle)
        step = 0.05
        slope_x = _ground_height(x + step, z, noise) - _ground_height(x - step, z, noise)
        slope_z = _ground_height(x, z + step, noise) - _ground_height(x, z - step, noise)
        normal = normalized((-slope_x, 2 * step, -slope_z))
        return (x, _ground_height(x, z, noise), z), (x / 2.6, -z / 2.6), normal

    for ring in range(len(radii) - 1):
        for column in range(segments):
            quad = [corner(ring + 1, column), corner(ring + 1, column + 1), corner(ring, column + 1),
                    corner(ring, column)]
            if ring == 0:
                del quad[3]
            mesh.use(next(name for name, end in GROUND if radii[ring] < end))
            mesh.face(quad)


def _stand(mesh):
    mesh.group("stand")
    mesh.use("plinth")
    lathe(mesh, [(12.7, -2.4), (12.8, -2.3), (12.8, -1.7), (12.55, -1.45)], 96, repeat=(16, 0.5))
    lathe(mesh, [(12.55, -1.45), (12.1, -1.4)], 96, repeat=(16, 0.5))
    mesh.use("rim")
    lathe(mesh, [(12.1, -1.4), (12.1, 0.1)], 96)
    lathe(mesh, [(12.1, 0.1), (12.02, 0.2), (11.78, 0.2), (11.7, 0.1)], 96)
    lathe(mesh, [(11.7, 0.1), (11.7, -1.2)], 96)


def _water(mesh):
    mesh.group("lake")
    mesh.use("water")
    segments, radii = 72, [6.2 + 0.55 * ring for ring in range(11)]

    def corner(ring, column):
        angle = 2 * math.pi * (column % segments) / segments
        x, z = radii[ring] * math.sin(angle), radii[ring] * math.cos(angle)
        lean_x = 0.06 * math.cos(2.1 * x + 0.8 * z) + 0.04 * math.cos(4.3 * x - 2.2 * z)
        lean_z = 0.06 * math.cos(1.1 * z - 1.7 * x) + 0.04 * math.cos(3.7 * z + 1.3 * x)
        height = WATER + 0.015 * (math.sin(2.1 * x + 0.8 * z) + math.sin(1.1 * z - 1.7 * x))
        return (x, height, z), None, normalized((-lean_x, 1.0, -lean_z))

    for ring in range(len(radii) - 1):
        for column in range(segments):
            mesh.face([corner(ring + 1, column), corner(ring + 1, column + 1), corner(ring, column + 1),
                       corner(ring, column)])


def _steps(mesh):
    mesh.group("steps")
    mesh.use("marble")
    top = PLATEAU - 0.1
    for step, radius in enumerate((4.35, 4.0, 3.65)):
        low, high = top, PLATEAU + (FLOOR - PLATEAU) * (step + 1) / 3
        lathe(mesh, [(radius, low), (radius, high - 0.04), (radius - 0.04, high)], 64, repeat=(8, 0.5))
        if step < 2:
            lathe(mesh, [(radius - 0.04, high), (radius - 0.36, high)], 64, repeat=(8, 0.5))
        top = high
    mesh.use("floor")
    disc(mesh, 3.61, FLOOR, 64, tex_scale=0.55)


def _column(mesh, angle):
    centre = (3.05 * math.sin(angle), FLOOR, 3.05 * math.cos(angle))
    mesh.use("marble")
    base = [(0.32, 0), (0.32, 0.1), (0.28, 0.12), (0.3, 0.17), (0.28, 0.22), (0.24, 0.26)]
    for low, high in zip(base, base[1:]):
        lathe(mesh, [low, high], 16, centre, (1, 0.6))
    shaft = [(0.22 - 0.04 * (t / 4) ** 2, 0.26 + 2.7 * t / 4) for t in range(5)]
    lathe(mesh, shaft, 36, centre, (1, 0.6), flute=lambda a: 1 + 0.05 * math.sin(6 * a) ** 2)
    capital = [(0.19, 2.96), (0.25, 3.02), (0.31, 3.12), (0.33, 3.2)]
    lathe(mesh, capital, 16, centre, (1, 0.6))
    lathe(mesh, [(0.33, 3.2), (0.33, 3.28)], 16, centre, (1, 0.6))


def _temple(mesh):
    for number in range(COLUMNS):
        mesh.group(f"column{number}")
        _column(mesh, 2 * math.pi * (number + 0.5) / COLUMNS)
    mesh.group("entablature")
    mesh.use("marble")
    ring = [(2.65, 4.58), (3.45, 4.58), (3.45, 4.84), (3.52, 4.88), (3.52, 5.12), (3.72, 5.26), (3.72, 5.36),
            (3.3, 5.42)]
    for low, high in zip(ring, ring[1:]):
        lathe(mesh, [low, high], 64, repeat=(10, 0.5))
    lathe(mesh, [(2.65, 5.4), (2.65, 4.58)], 64, repeat=(8, 0.5))
    mesh.group("dome")
    mesh.use("roof")
    dome = [(3.3 * math.cos(a), 5.42 + 2.35 * math.sin(a)) for a in
            (math.pi / 2 * step / 14 for step in range(14))] + [(0.14, 7.77)]
    lathe(mesh, dome, 64, repeat=(5, 0.32))
    mesh.use("gold")
    lathe(mesh, [(0.3, 7.7), (0.34, 7.78), (0.16, 7.9), (0.1, 8.05), (0.22, 8.2), (0.26, 8.32), (0.16, 8.5),
                 (0.05, 8.7), (0, 9.05)], 24)


def _orb(mesh, rng):
    """A glass ball with a golden one in it, on a pedestal."""
    mesh.group("orb")
    mesh.use("marble")
    lathe(mesh, [(0.72, FLOOR), (0.72, 1.42), (0.5, 1.5), (0.38, 1.9), (0.5, 2.2), (0.65, 2.28)], 8,
          repeat=(2, 0.6))
    disc(mesh, 0.65, 2.28, 8, tex_scale=0.5)
    mesh.use("gold")
    faceted_ball(mesh, (0, 3.05, 0), (0.4, 0.4, 0.4), rng, 0.0, 0)
    mesh.use("glass")
    smooth_ball(mesh, (0, 3.05, 0), 0.78, 3)


def _cypress(mesh, x, z, height, ground, rng):
    mesh.use("trunk")
    lathe(mesh, [(0.09, -0.2), (0.07, 0.4)], 6, (x, ground, z))
    mesh.use("cypress")
    faceted_ball(mesh, (x, ground + 0.3 + height / 2, z), (0.2 * height ** 0.8, height / 2, 0.2 * height ** 0.8),
                 rng, 0.09, 2)


def _blossom_tree(mesh, x, z, ground, rng):
    mesh.use("trunk")
    lathe(mesh, [(0.15, -0.2), (0.1, 0.5), (0.08, 1.2)], 7, (x, ground, z))
    mesh.use("blossom")
    for _ in range(4):
        angle, out = rng.random() * 2 * math.pi, 0.15 + 0.3 * rng.random()
        size = 0.42 + 0.22 * rng.random()
        centre = (x + out * math.sin(angle), ground + 1.35 + 0.5 * rng.random(), z + out * math.cos(angle))
        faceted_ball(mesh, centre, (size, size * 0.85, size), rng, 0.12, 1)


def _garden(mesh, noise, rng):
    mesh.group("garden")

    def place(degrees, radius):
        angle = math.radians(degrees)
        x, z = radius * math.sin(angle), radius * math.cos(angle)
        return x, z, _ground_height(x, z, noise)

    for degrees, radius, height in ((62, 5.6, 3.4), (84, 6.1, 2.7), (150, 5.8, 3.8), (172, 5.6, 3.1),
                                    (196, 6.0, 3.6), (262, 5.7, 3.5), (283, 6.2, 2.6)):
        x, z, ground = place(degrees, radius)
        _cypress(mesh, x, z, height, ground, rng)
    for degrees, radius in ((38, 6.1), (116, 5.9), (226, 5.7), (318, 5.9)):
        x, z, ground = place(degrees, radius)
        _blossom_tree(mesh, x, z, ground, rng)
    mesh.use("rock")
    for _ in range(34):
        x, z, ground = place(rng.random() * 360, 7.1 + 2.2 * rng.random())
        size = 0.16 + 0.34 * rng.random() ** 2
        if abs(x) > 1.3 or z < 0:
            faceted_ball(mesh, (x, ground + 0.2 * size, z), (size, size * 0.75, size * 0.9), rng, 0.16, 1)


def _jetty(mesh):
    mesh.group("jetty")
    mesh.use("plinth")
    for plank in range(13):
        z = 6.6 + 0.3 * plank
        box(mesh, (-0.62, 0.28, z), (0.62, 0.35, z + 0.26), tex_scale=0.4)
    for z in (7.0, 8.6, 10.2):
        for x in (-0.55, 0.55):
            lathe(mesh, [(0.07, -1.1), (0.07, 0.62), (0.0, 0.66)], 8, (x, 0, z), (1, 0.5))
    mesh.use("rim")
    for stone in range(5):
        lathe(mesh, [(0.46, 0.2), (0.46, 0.66 - 0.06 * stone), (0.4, 0.7 - 0.06 * stone)], 9,
              (0.12 * (-1) ** stone, 0, 4.72 + 0.42 * stone), (2, 0.5))
        disc(mesh, 0.4, 0.7 - 0.06 * stone, 9, (0.12 * (-1) ** stone, 0, 4.72 + 0.42 * stone), 0.5)


def _lilies(mesh, rng):
    """Round leaves with a notch: concave polygons."""
    mesh.group("lilies")
    for _ in range(16):
        angle, radius = math.radians(30 + 120 * rng.random()), 9.4 + 1.7 * rng.random()
        centre = (radius * math.sin(angle), radius * math.cos(angle))
        size, turn = 0.22 + 0.16 * rng.random(), rng.random() * 2 * math.pi
        points = [(centre[0] + 0.25 * size * math.sin(turn), 0.05, centre[1] + 0.25 * size * math.cos(turn))]
        for step in range(15):
            at = turn + 0.28 + (2 * math.pi - 0.56) * step / 14
            points.append((centre[0] + size * math.sin(at), 0.05, centre[1] + size * math.cos(at)))
        mesh.use("lily")
        mesh.flat_face(points)
        if rng.random() < 0.4:
            mesh.use("blossom")
            faceted_ball(mesh, (centre[0], 0.14, centre[1]), (0.12, 0.09, 0.12), rng, 0.15, 0)


def _trellis(mesh):
    """Leaves with holes around the back of the temple, one pane between each two columns."""
    mesh.group("trellis")
    mesh.use("trellis")
    for number in (3, 4, 5, 6, 7):
        a = 2 * math.pi * (number + 0.5) / COLUMNS + 0.08
        b = 2 * math.pi * (number + 1.5) / COLUMNS - 0.08
        low, high = FLOOR, FLOOR + 1.15
        ends = [(3.02 * math.sin(t), 3.02 * math.cos(t)) for t in (a, b)]
        mesh.flat_face([(ends[0][0], low, ends[0][1]), (ends[1][0], low, ends[1][1]),
                        (ends[1][0], high, ends[1][1]), (ends[0][0], high, ends[0][1])],
                       [(0, 0), (1.6, 0), (1.6, 1.4), (0, 1.4)])


def files():
    noise, rng = textures.fractal(71, 6, 3), random.Random(7)
    mesh = Mesh(tex_coord=(0, 0))
    _stand(mesh)
    mesh.group("island")
    _ground(mesh, noise)
    _steps(mesh)
    _temple(mesh)
    _garden(mesh, noise, rng)
    _jetty(mesh)
    _lilies(mesh, rng)
    _trellis(mesh)
    _orb(mesh, rng)
    _water(mesh)
    return {
        "showpiece.obj": mesh.text("A garden temple on an island", "showpiece.mtl").encode(),
        "showpiece.mtl": MATERIALS.encode(),
        "wood.png": textures.wood(),
        "grass.png": textures.grass(),
        "marble.png": textures.marble(),
        "floor.png": textures.floor_tiles(),
        "polish.png": textures.floor_polish(),
        "roof.png": textures.roof_tiles(),
        "trellis.png": textures.lattice(),
    }
