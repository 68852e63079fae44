#include "inputs.h"

#include <functional>

#include <QtCore/QFileInfo>
#include <QtCore/QHash>

#include "meshes.h"

namespace Atelier::Vel::Bench {

namespace {

using Writer = std::function<void(const QString& path, int size)>;

Writer grid(const GridOptions& options) {
    return [options](const QString& path, int size) { writeGrid(path, size, options); };
}

Writer polygon(PolygonShape shape) {
    return [shape](const QString& path, int size) { writeOnePolygon(path, size, shape); };
}

Writer writerOf(const QString& name) {
    const QHash<QString, Writer> writers{
        {"A", grid({})},
        {"B", grid({GridFaces::Quads})},
        {"C", grid({GridFaces::Triangles, GridOrder::Rows, GridAttributes::PositionsOnly})},
        {"D", grid({})},
        {"E", writePolygons},
        {"F", grid({})},
        {"G", grid({GridFaces::Triangles, GridOrder::Random})},
        {"H", writeSoup},
        {"circle", polygon(PolygonShape::Circle)},
        {"comb", polygon(PolygonShape::Comb)},
        {"star", polygon(PolygonShape::Star)},
        {"spiral", polygon(PolygonShape::Spiral)},
        {"switches", writeMaterialSwitches},
        {"groups", writeManyGroups},
    };
    return writers.value(name);
}

} // namespace

const QVector<InputKind>& comparedKinds() {
    static const QVector<InputKind> kinds{
        {"A", "triangles, v/vt/vn, six decimals", 1000000, 100000},
        {"B", "the same as quads", 1000000, 100000},
        {"C", "triangles, positions only, normals made", 1000000, 100000},
        {"D", "small file", 10000, 10000},
        {"E", "polygons of 5 to 12 corners, 50 materials switching", 2400000, 240000},
        {"F", "large file", 8000000, 800000},
        {"G", "A in random order", 1000000, 100000},
        {"H", "triangle soup, merged by bytes alone", 340000, 34000},
    };
    return kinds;
}

const QVector<InputKind>& recordedKinds() {
    static const QVector<InputKind> kinds{
        {"circle", "one round polygon", 100000, 10000},
        {"comb", "one polygon of long teeth", 100000, 10000},
        {"star", "one polygon of random spikes", 100000, 10000},
        {"spiral", "one spiral polygon", 100000, 10000},
        {"switches", "material switches over 10 materials", 10000, 10000},
        {"groups", "material groups of one face", 100000, 10000},
    };
    return kinds;
}

QString generateInput(const InputKind& kind, int size, const QString& directory) {
    QString path = QStringLiteral("%1/%2-%3.obj").arg(directory, kind.name).arg(size);
    if (!QFileInfo::exists(path)) {
        const QString unfinished = path + QStringLiteral(".part");
        writerOf(kind.name)(unfinished, size);
        QFile::rename(unfinished, path);
    }
    return path;
}

} // namespace Atelier::Vel::Bench
