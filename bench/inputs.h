#pragma once

#include <cstdint>

#include <QtCore/QString>
#include <QtCore/QVector>

namespace Atelier::Vel::Bench {

/// One kind of input that the benchmarks load.
struct InputKind {
    QString name;        ///< the first word of a row: "A" to "H", or what a record case is called
    QString description; ///< for people
    int size;            ///< triangles at full size; corners of a polygon; material switches; material groups
    int quickSize;       ///< the same for a quick run
};

/// The kinds that have a comparison to win, A to H.
const QVector<InputKind>& comparedKinds();
/// Further kinds that are on record only.
const QVector<InputKind>& recordedKinds();

/// Writes `<directory>/<name>-<size>.obj` (and an .mtl beside it where materials are used) unless it is there
/// already. The bytes depend on the kind and the size alone. Returns: the path.
QString generateInput(const InputKind& kind, int size, const QString& directory);

} // namespace Atelier::Vel::Bench
