"""Collects faces by value and writes them as OBJ text."""

import math


def subtract(a, b):
    return (a[0] - b[0], a[1] - b[1], a[2] - b[2])


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def normalized(v):
    length = math.sqrt(v[0] ** 2 + v[1] ** 2 + v[2] ** 2)
    return (v[0] / length, v[1] / length, v[2] / length) if length else (0.0, 1.0, 0.0)


def _number(value, digits):
    text = f"{value:.{digits}f}".rstrip("0").rstrip(".")
    return "0" if text in ("-0", "") else text


class _Pool:
    """Numbers equal lines once, in order of first use."""

    def __init__(self, keyword, digits):
        self.keyword, self.digits = keyword, digits
        self.numbers = {}

    def number(self, value):
        line = " ".join([self.keyword] + [_number(part, self.digits) for part in value])
        return self.numbers.setdefault(line, len(self.numbers) + 1)

    def lines(self):
        return list(self.numbers)


class Mesh:
    """Faces in the order they were added. A corner is (position, texture coordinate or None, normal or None).

    Corners without a texture coordinate get `tex_coord`, if there is one.
    """

    def __init__(self, tex_coord=None):
        self._tex_coord = tex_coord
        self._positions = _Pool("v", 4)
        self._tex_coords = _Pool("vt", 4)
        self._normals = _Pool("vn", 3)
        self._lines = []
        self._material = None

    def use(self, material):
        if material != self._material:
            self._lines.append(f"usemtl {material}")
            self._material = material

    def group(self, name):
        self._lines.append(f"g {name}")

    def face(self, corners):
        self._lines.append("f " + " ".join(self._corner(*corner) for corner in corners))

    def flat_face(self, points, tex_coords=None):
        """A face with its own normal, counter-clockwise seen from outside."""
        normal = newell_normal(points)
        tex_coords = tex_coords or [None] * len(points)
        self.face([(point, tex, normal) for point, tex in zip(points, tex_coords)])

    def _corner(self, position, tex_coord, normal):
        text = str(self._positions.number(position))
        tex_coord = tex_coord or self._tex_coord
        if tex_coord is not None or normal is not None:
            text += "/" + (str(self._tex_coords.number(tex_coord)) if tex_coord is not None else "")
        if normal is not None:
            text += "/" + str(self._normals.number(normal))
        return text

    def text(self, title, library):
        head = [f"# {title}", f"mtllib {library}"]
        data = self._positions.lines() + self._tex_coords.lines() + self._normals.lines()
        return "\n".join(head + data + self._lines) + "\n"


def newell_normal(points):
    total = [0.0, 0.0, 0.0]
    for a, b in zip(points, points[1:] + points[:1]):
        total[0] += (a[1] - b[1]) * (a[2] + b[2])
        total[1] += (a[2] - b[2]) * (a[0] + b[0])
        total[2] += (a[0] - b[0]) * (a[1] + b[1])
    return normalized(total)


def _profile_normals(profile):
    """Outward normals (radial, height) of a profile that runs upwards."""
    slopes = []
    for (r0, y0), (r1, y1) in zip(profile, profile[1:]):
        length = math.hypot(r1 - r0, y1 - y0)
        slopes.append(((y1 - y0) / length, (r0 - r1) / length))
    joined = [slopes[0]]
    for a, b in zip(slopes, slopes[1:]):
        length = math.hypot(a[0] + b[0], a[1] + b[1]) or 1.0
        joined.append(((a[0] + b[0]) / length, (a[1] + b[1]) / length))
    return joined + [slopes[-1]]


def lathe(mesh, profile, segments, centre=(0.0, 0.0, 0.0), repeat=(1.0, 1.0), flute=None):
    """Turns a profile of (radius, height), running upwards, about a vertical axis; smooth along and around.

    `flute` maps an angle to a factor of the radius.
    """
    normals = _profile_normals(profile)
    length = [0.0]
    for (r0, y0), (r1, y1) in zip(profile, profile[1:]):
        length.append(length[-1] + math.hypot(r1 - r0, y1 - y0))

    def corner(row, column):
        angle = 2 * math.pi * (column % segments) / segments
        radius, height = profile[row]
        scale = flute(angle) if flute else 1.0
        position = (centre[0] + radius * scale * math.sin(angle), centre[1] + height,
                    centre[2] + radius * scale * math.cos(angle))
        radial, up = normals[row]
        turn = 0.0
        if flute:  # the radius changes with the angle, and the normal leans against that
            turn = -(flute(angle + 1e-3) - flute(angle - 1e-3)) / 2e-3 / scale
        tangent = (math.cos(angle), -math.sin(angle))
        normal = normalized((radial * (math.sin(angle) + turn * tangent[0]), up,
                             radial * (math.cos(angle) + turn * tangent[1])))
        tex_coord = (repeat[0] * column / segments, repeat[1] * length[row])
        return position, tex_coord, normal

    for row in range(len(profile) - 1):
        for column in range(segments):
            ring = [corner(row, column), corner(row, column + 1), corner(row + 1, column + 1),
                    corner(row + 1, column)]
            if profile[row][0] == 0:
                del ring[1]
            elif profile[row + 1][0] == 0:
                del ring[3]
            mesh.face(ring)


def disc(mesh, radius, height, segments, centre=(0.0, 0.0, 0.0), tex_scale=1.0):
    """One polygon that faces up."""
    points = []
    for step in range(segments):
        angle = 2 * math.pi * step / segments
        points.append((centre[0] + radius * math.sin(angle), centre[1] + height,
                       centre[2] + radius * math.cos(angle)))
    mesh.flat_face(points, [(p[0] * tex_scale, -p[2] * tex_scale) for p in points])


def box(mesh, low, high, turn=0.0, tex_scale=1.0):
    """An axis-aligned box, then turned about the vertical axis through the origin."""
    def point(x, y, z):
        c, s = math.cos(turn), math.sin(turn)
        return (c * x + s * z, y, c * z - s * x)

    (x0, y0, z0), (x1, y1, z1) = low, high
    sides = [
        ((x0, y0, z1), (x1, y0, z1), (x1, y1, z1), (x0, y1, z1)),
        ((x1, y0, z0), (x0, y0, z0), (x0, y1, z0), (x1, y1, z0)),
        ((x1, y0, z1), (x1, y0, z0), (x1, y1, z0), (x1, y1, z1)),
        ((x0, y0, z0), (x0, y0, z1), (x0, y1, z1), (x0, y1, z0)),
        ((x0, y1, z1), (x1, y1, z1), (x1, y1, z0), (x0, y1, z0)),
        ((x0, y0, z0), (x1, y0, z0), (x1, y0, z1), (x0, y0, z1)),
    ]
    for side in sides:
        width = math.dist(side[0], side[1]) * tex_scale
        height = math.dist(side[1], side[2]) * tex_scale
        mesh.flat_face([point(*corner) for corner in side], [(0, 0), (width, 0), (width, height), (0, height)])


def icosphere(levels):
    """Points and triangles of a unit sphere cut from an icosahedron."""
    t = (1 + math.sqrt(5)) / 2
    points = [normalized(p) for p in (
        (-1, t, 0), (1, t, 0), (-1, -t, 0), (1, -t, 0), (0, -1, t), (0, 1, t),
        (0, -1, -t), (0, 1, -t), (t, 0, -1), (t, 0, 1), (-t, 0, -1), (-t, 0, 1))]
    triangles = [(0, 11, 5), (0, 5, 1), (0, 1, 7), (0, 7, 10), (0, 10, 11), (1, 5, 9), (5, 11, 4),
                 (11, 10, 2), (10, 7, 6), (7, 1, 8), (3, 9, 4), (3, 4, 2), (3, 2, 6), (3, 6, 8),
                 (3, 8, 9), (4, 9, 5), (2, 4, 11), (6, 2, 10), (8, 6, 7), (9, 8, 1)]
    for _ in range(levels):
        middles, finer = {}, []

        def middle(a, b):
            key = (min(a, b), max(a, b))
            if key not in middles:
                middles[key] = len(points)
                points.append(normalized(tuple(points[a][i] + points[b][i] for i in range(3))))
            return middles[key]

        for a, b, c in triangles:
            ab, bc, ca = middle(a, b), middle(b, c), middle(c, a)
            finer += [(a, ab, ca), (b, bc, ab), (c, ca, bc), (ab, bc, ca)]
        triangles = finer
    return points, triangles


def faceted_ball(mesh, centre, size, rng, roughness, levels=1):
    """A ball of flat triangles, its points moved in and out at random; `size` is the radius per axis."""
    points, triangles = icosphere(levels)
    moved = []
    for p in points:
        grow = 1 + roughness * (rng.random() * 2 - 1)
        moved.append(tuple(centre[i] + p[i] * size[i] * grow for i in range(3)))
    for triangle in triangles:
        mesh.flat_face([moved[i] for i in triangle])


def smooth_ball(mesh, centre, radius, levels):
    points, triangles = icosphere(levels)
    for triangle in triangles:
        mesh.face([(tuple(centre[i] + points[n][i] * radius for i in range(3)), None, points[n])
                   for n in triangle])
