#include "meshes.h"

#include <cmath>
#include <vector>

#include <QtCore/QFileInfo>

#include "random.h"
#include "textwriter.h"

namespace Atelier::Vel::Bench {

namespace {

constexpr std::int64_t kMillion = 1000000;
constexpr std::int64_t kExtent = 10 * kMillion;
// The surface is z = kSaddle * x * y with bumps.
constexpr double kSaddle = 0.08;
constexpr int kPolygonMaterials = 50;
constexpr int kSwitchMaterials = 10;

struct Point {
    std::int64_t x = 0;
    std::int64_t y = 0;
    std::int64_t z = 0;
};

/// One vertex of the surface, in millionths.
struct SurfaceVertex {
    Point position;
    Point normal;
    std::int64_t u = 0;
    std::int64_t v = 0;
};

std::int64_t rounded(double value) {
    return std::int64_t(std::floor(value * double(kMillion) + 0.5));
}

SurfaceVertex surfaceVertex(std::int64_t u, std::int64_t v, std::int64_t bump) {
    SurfaceVertex vertex;
    vertex.u = u;
    vertex.v = v;
    vertex.position.x = u * kExtent / kMillion - kExtent / 2;
    vertex.position.y = v * kExtent / kMillion - kExtent / 2;
    const double x = double(vertex.position.x) / double(kMillion);
    const double y = double(vertex.position.y) / double(kMillion);
    vertex.position.z = rounded(kSaddle * x * y) + bump;
    const double slopeX = -kSaddle * y;
    const double slopeY = -kSaddle * x;
    const double length = std::sqrt(slopeX * slopeX + slopeY * slopeY + 1.0);
    vertex.normal = {rounded(slopeX / length), rounded(slopeY / length), rounded(1.0 / length)};
    return vertex;
}

void writePoint(TextWriter& out, std::string_view keyword, const Point& point) {
    out.text(keyword);
    for (const auto value : {point.x, point.y, point.z}) {
        out.text(" ");
        out.decimal(value);
    }
    out.text("\n");
}

void writeTexCoord(TextWriter& out, const SurfaceVertex& vertex) {
    out.text("vt ");
    out.decimal(vertex.u);
    out.text(" ");
    out.decimal(vertex.v);
    out.text("\n");
}

void writeVertices(TextWriter& out, const std::vector<SurfaceVertex>& vertices, GridAttributes attributes) {
    for (const auto& vertex : vertices)
        writePoint(out, "v", vertex.position);
    if (attributes == GridAttributes::PositionsOnly)
        return;
    for (const auto& vertex : vertices)
        writeTexCoord(out, vertex);
    for (const auto& vertex : vertices)
        writePoint(out, "vn", vertex.normal);
}

void writeCorner(TextWriter& out, std::uint32_t vertex, GridAttributes attributes) {
    out.text(" ");
    out.number(vertex + 1U);
    if (attributes == GridAttributes::PositionsOnly)
        return;
    for (int repeat = 0; repeat < 2; ++repeat) {
        out.text("/");
        out.number(vertex + 1U);
    }
}

void writeFace(TextWriter& out, const std::vector<std::uint32_t>& corners, GridAttributes attributes) {
    out.text("f");
    for (const auto corner : corners)
        writeCorner(out, corner, attributes);
    out.text("\n");
}

/// A grid of `side` by `side` cells.
struct Grid {
    std::vector<SurfaceVertex> vertices;
    std::vector<std::vector<std::uint32_t>> faces;
};

std::vector<SurfaceVertex> gridVertices(std::uint32_t side) {
    Random random(side);
    const std::int64_t bump = kExtent / side / 4;
    std::vector<SurfaceVertex> vertices;
    vertices.reserve(std::size_t(side + 1) * (side + 1));
    for (std::uint32_t row = 0; row <= side; ++row)
        for (std::uint32_t column = 0; column <= side; ++column)
            vertices.push_back(
                surfaceVertex(kMillion * column / side, kMillion * row / side, random.between(-bump, bump)));
    return vertices;
}

std::vector<std::vector<std::uint32_t>> gridFaces(std::uint32_t side, GridFaces kind) {
    std::vector<std::vector<std::uint32_t>> faces;
    faces.reserve(std::size_t(side) * side * 2);
    for (std::uint32_t row = 0; row < side; ++row) {
        for (std::uint32_t column = 0; column < side; ++column) {
            const std::uint32_t corner = row * (side + 1) + column;
            const std::uint32_t above = corner + side + 1;
            if (kind == GridFaces::Quads) {
                faces.push_back({corner, corner + 1, above + 1, above});
            } else {
                faces.push_back({corner, corner + 1, above + 1});
                faces.push_back({corner, above + 1, above});
            }
        }
    }
    return faces;
}

Grid makeGrid(int triangles, GridFaces kind) {
    const auto side = std::uint32_t(std::lround(std::sqrt(triangles / 2.0)));
    return {gridVertices(side), gridFaces(side, kind)};
}

void shuffleGrid(Grid& grid) {
    Random random(grid.faces.size());
    std::vector<std::uint32_t> order(grid.vertices.size());
    for (std::uint32_t vertex = 0; vertex < order.size(); ++vertex)
        order[vertex] = vertex;
    random.shuffle(order);
    std::vector<SurfaceVertex> moved(grid.vertices.size());
    for (std::size_t vertex = 0; vertex < order.size(); ++vertex)
        moved[order[vertex]] = grid.vertices[vertex];
    grid.vertices = std::move(moved);
    for (auto& face : grid.faces)
        for (auto& corner : face)
            corner = order[corner];
    random.shuffle(grid.faces);
}

/// Writes `<path without .obj...>.mtl` with `count` materials and the "mtllib" line that names it.
void writeMaterials(TextWriter& out, const QString& path, int count) {
    const QFileInfo info(path);
    const QString name = info.fileName().section(QLatin1Char('.'), 0, 0) + QStringLiteral(".mtl");
    TextWriter library(info.path() + QLatin1Char('/') + name);
    Random random{std::uint64_t(count)};
    for (int material = 0; material < count; ++material) {
        library.text("newmtl material_");
        library.number(std::uint64_t(material));
        library.text("\n");
        writePoint(library, "Kd", {random.between(0, kMillion), random.between(0, kMillion), kMillion});
    }
    out.text("mtllib ");
    out.text(name.toStdString());
    out.text("\n");
}

void useMaterial(TextWriter& out, std::int64_t material) {
    out.text("usemtl material_");
    out.number(std::uint64_t(material));
    out.text("\n");
}

} // namespace

void writeGrid(const QString& path, int triangles, const GridOptions& options) {
    Grid grid = makeGrid(triangles, options.faces);
    if (options.order == GridOrder::Random)
        shuffleGrid(grid);
    TextWriter out(path);
    out.text("# a grid\n");
    writeVertices(out, grid.vertices, options.attributes);
    for (const auto& face : grid.faces)
        writeFace(out, face, options.attributes);
}

void writeSoup(const QString& path, int triangles) {
    const Grid grid = makeGrid(triangles, GridFaces::Triangles);
    std::vector<SurfaceVertex> corners;
    corners.reserve(grid.faces.size() * 3);
    for (const auto& face : grid.faces)
        for (const auto corner : face)
            corners.push_back(grid.vertices[corner]);
    TextWriter out(path);
    out.text("# triangle soup\n");
    writeVertices(out, corners, GridAttributes::All);
    for (std::uint32_t corner = 0; corner < corners.size(); corner += 3)
        writeFace(out, {corner, corner + 1, corner + 2}, GridAttributes::All);
}

void writeMaterialSwitches(const QString& path, int switches) {
    constexpr int kFacesPerSwitch = 10;
    const Grid grid = makeGrid(switches * kFacesPerSwitch, GridFaces::Triangles);
    TextWriter out(path);
    writeMaterials(out, path, kSwitchMaterials);
    writeVertices(out, grid.vertices, GridAttributes::All);
    for (std::size_t face = 0; face < grid.faces.size(); ++face) {
        if (face % kFacesPerSwitch == 0)
            useMaterial(out, std::int64_t(face / kFacesPerSwitch) % kSwitchMaterials);
        writeFace(out, grid.faces[face], GridAttributes::All);
    }
}

void writeManyGroups(const QString& path, int groups) {
    const Grid grid = makeGrid(groups, GridFaces::Triangles);
    TextWriter out(path);
    writeMaterials(out, path, int(grid.faces.size()));
    writeVertices(out, grid.vertices, GridAttributes::All);
    for (std::size_t face = 0; face < grid.faces.size(); ++face) {
        useMaterial(out, std::int64_t(face));
        writeFace(out, grid.faces[face], GridAttributes::All);
    }
}

namespace {

/// The line between two rows of polygons: a vertex at every cell border, and `inner` vertices between two
/// borders.
struct BorderLine {
    std::vector<std::uint32_t> cellStart;
};

BorderLine appendLine(std::vector<SurfaceVertex>& vertices, Random& random, int row, int side) {
    BorderLine line;
    const std::int64_t cell = kMillion / side;
    const int fewest = row % 2 == 0 ? 1 : 0;
    for (int column = 0; column < side; ++column) {
        line.cellStart.push_back(std::uint32_t(vertices.size()));
        const auto inner = random.between(fewest, 4);
        for (std::int64_t step = 0; step <= inner; ++step) {
            const std::int64_t sway = step == 0 ? 0 : random.between(-cell / 4, cell / 4);
            vertices.push_back(
                surfaceVertex(cell * column + cell * step / (inner + 1), cell * row + sway + cell, 0));
        }
    }
    line.cellStart.push_back(std::uint32_t(vertices.size()));
    vertices.push_back(surfaceVertex(cell * side, cell * row + cell, 0));
    return line;
}

std::vector<std::uint32_t> polygonBetween(const BorderLine& below, const BorderLine& above,
                                          std::size_t column) {
    std::vector<std::uint32_t> corners;
    for (auto vertex = below.cellStart[column]; vertex <= below.cellStart[column + 1]; ++vertex)
        corners.push_back(vertex);
    for (auto vertex = above.cellStart[column + 1] + 1; vertex-- > above.cellStart[column];)
        corners.push_back(vertex);
    return corners;
}

} // namespace

void writePolygons(const QString& path, int triangles) {
    // A polygon has 8.5 corners on average, which makes 6.5 triangles.
    const int side = int(std::lround(std::sqrt(triangles / 6.5)));
    Random random{std::uint64_t(side)};
    std::vector<SurfaceVertex> vertices;
    std::vector<BorderLine> lines;
    for (int row = 0; row <= side; ++row)
        lines.push_back(appendLine(vertices, random, row, side));
    TextWriter out(path);
    writeMaterials(out, path, kPolygonMaterials);
    writeVertices(out, vertices, GridAttributes::All);
    std::int64_t material = 0;
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            material = (material + random.between(1, kPolygonMaterials - 1)) % kPolygonMaterials;
            useMaterial(out, material);
            writeFace(
                out,
                polygonBetween(lines[std::size_t(row)], lines[std::size_t(row) + 1], std::size_t(column)),
                GridAttributes::All);
        }
    }
}

namespace {

/// A point of the unit circle by its rational parametrisation, without library functions whose last digit
/// varies.
std::pair<double, double> circlePoint(double turn) {
    const double quarter = std::floor(turn * 4.0);
    const double t = (turn * 4.0 - quarter);
    const double x = (1.0 - t * t) / (1.0 + t * t);
    const double y = 2.0 * t / (1.0 + t * t);
    switch (int(quarter) & 3) {
    case 0:
        return {x, y};
    case 1:
        return {-y, x};
    case 2:
        return {-x, -y};
    default:
        return {y, -x};
    }
}

Point ringPoint(double turn, double radius) {
    const auto [x, y] = circlePoint(turn);
    return {rounded(x * radius), rounded(y * radius), 0};
}

std::vector<Point> combPoints(int corners) {
    std::vector<Point> points{{0, -kMillion, 0}, {(corners - 2) * kMillion / 100, -kMillion, 0}};
    for (int corner = corners - 3; corner >= 0; --corner)
        points.push_back({corner * kMillion / 100, corner % 2 == 0 ? 100 * kMillion : 0, 0});
    return points;
}

std::vector<Point> spiralPoints(int corners) {
    constexpr double kTurns = 50.0;
    std::vector<Point> points;
    const int half = corners / 2;
    for (int corner = 0; corner < corners; ++corner) {
        const bool outward = corner < half;
        const double along = double(outward ? corner : corners - 1 - corner) / half;
        points.push_back(ringPoint(along * kTurns, 100.0 + along * kTurns * 10.0 + (outward ? 0.0 : 3.0)));
    }
    return points;
}

std::vector<Point> polygonPoints(int corners, PolygonShape shape) {
    if (shape == PolygonShape::Comb)
        return combPoints(corners);
    if (shape == PolygonShape::Spiral)
        return spiralPoints(corners);
    Random random{std::uint64_t(corners)};
    std::vector<Point> points;
    for (int corner = 0; corner < corners; ++corner) {
        const double radius = shape == PolygonShape::Circle ? 1000.0 : double(random.between(500, 1500));
        points.push_back(ringPoint(double(corner) / corners, radius));
    }
    return points;
}

} // namespace

void writeOnePolygon(const QString& path, int corners, PolygonShape shape) {
    TextWriter out(path);
    for (const auto& point : polygonPoints(corners, shape))
        writePoint(out, "v", point);
    std::vector<std::uint32_t> face(std::size_t(corners), 0);
    for (std::uint32_t corner = 0; corner < face.size(); ++corner)
        face[corner] = corner;
    writeFace(out, face, GridAttributes::PositionsOnly);
}

} // namespace Atelier::Vel::Bench
