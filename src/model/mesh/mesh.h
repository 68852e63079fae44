#pragma once

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <velmodel/modeldatastream.h>

#include "mesh/attributestore.h"
#include "mesh/facestore.h"
#include "mesh/generatednormals.h"
#include "mesh/groupstore.h"
#include "mesh/input.h"
#include "mesh/streamsource.h"

namespace Atelier::Vel {

/// The input from a client or a file. Its parts may be inconsistent.
struct Mesh {
    explicit Mesh(Input input, QSharedPointer<ModelDataStreamAllocator> allocator = {});
    Mesh(const Mesh&) = delete;
    Mesh& operator=(const Mesh&) = delete;

    /// Restores the state after construction.
    void clear();
    /// Whether there are groups, faces and attributes, and every attribute has values and indices.
    bool isComplete() const;
    /// Corners of all faces, modulo 2^32.
    quint32 cornerCount() const;

    StreamSource streams;
    GroupStore groups;
    FaceStore faces;
    AttributeStore attributes;
    QString normalsAttribute; ///< the attribute for generated smooth normals; null for none
    GeneratedNormals generatedNormals;
};

} // namespace Atelier::Vel
