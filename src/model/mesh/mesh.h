#pragma once

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <velmodel/modeldatastream.h>

#include "mesh/attributestore.h"
#include "mesh/facestore.h"
#include "mesh/groupstore.h"
#include "mesh/input.h"
#include "mesh/streamsource.h"

namespace Atelier::Vel {

/// What a client or a file hands in. Nothing of it has to fit together.
struct Mesh {
    explicit Mesh(Input input, QSharedPointer<ModelDataStreamAllocator> allocator = {});
    Mesh(const Mesh&) = delete;
    Mesh& operator=(const Mesh&) = delete;

    /// Back to the state after construction.
    void clear();
    /// Whether there are groups, faces and attributes, and every attribute has values and indices.
    bool isComplete() const;
    /// Corners of all faces, modulo 2^32.
    quint32 cornerCount() const;

    StreamSource streams;
    GroupStore groups;
    FaceStore faces;
    AttributeStore attributes;
    QString normalsAttribute; ///< the attribute to make of smooth normals; null for none
};

} // namespace Atelier::Vel
