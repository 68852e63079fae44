#pragma once

#include <optional>

#include <QtCore/QSharedPointer>

#include <velmodel/modeldatastream.h>

#include "geometry/triangulation/facetable.h"
#include "mesh/input.h"
#include "mesh/streamsource.h"

namespace Atelier::Vel {

/// The corner counts of the faces. If the input is consumed and all faces have the same number of corners, no
/// list is kept.
class FaceStore {
public:
    /// `streams` must outlive the store.
    FaceStore(StreamSource& streams, Input input);

    void clear();
    bool isEmpty() const;
    void add(quint64 count, const unsigned int* cornerCounts);

    /// Corners of all faces, modulo 2^32.
    quint32 cornerCount() const;
    /// The faces if they all have the same number of corners and are not listed; otherwise `corners` is 0.
    UniformFaces uniform() const { return _uniform.value_or(UniformFaces()); }
    /// The corner count of each face, empty while the faces are uniform. Null if the allocator returned no
    /// stream.
    QSharedPointer<ModelDataStream>& listed() { return _counts; }

private:
    bool addUniform(quint64 count, const unsigned int* cornerCounts);
    void listUniform();

    StreamSource& _streams;
    Input _input;
    QSharedPointer<ModelDataStream> _counts;
    std::optional<UniformFaces> _uniform; ///< replaces _counts
};

} // namespace Atelier::Vel
