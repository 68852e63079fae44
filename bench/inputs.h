#pragma once

#include <cstdint>

#include <QtCore/QString>
#include <QtCore/QVector>

namespace Atelier::Vel::Bench {

/// One kind of input that the benchmarks load.
struct InputKind {
    QString name;        ///< the first word of a row: "A" to "H", or the name of a record case
    QString description; ///< for people
    int size;            ///< triangles at full size; corners of a polygon; material switches; material groups
    int quickSize;       ///< the same for a quick run
};

/// The kinds that are compared with other pipelines, A to H.
const QVector<InputKind>& comparedKinds();
/// Further kinds, which are only recorded.
const QVector<InputKind>& recordedKinds();

/// Writes `<directory>/<name>-<size>.obj`, and an .mtl file beside it if materials are used, unless the file
/// exists. The bytes depend only on the kind and the size. Returns: the path.
QString generateInput(const InputKind& kind, int size, const QString& directory);

} // namespace Atelier::Vel::Bench
