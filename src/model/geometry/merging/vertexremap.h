#pragma once

#include <memory>
#include <utility>

#include "memory/scratchblock.h"

namespace Atelier::Vel {

/// A remap from corners to vertices: the vertex of each corner and the first corner of each vertex. Vertices
/// are numbered from 0 in the order in which they first appear over the corners. All ways of merging produce
/// a remap.
class VertexRemap {
public:
    /// Constructs the identity: until corners are merged, each corner is a vertex. `vertexOfCorner` has
    /// capacity for `cornerCount` entries.
    VertexRemap(quint32 cornerCount, quint32* vertexOfCorner)
        : _cornerCount(cornerCount), _vertexOfCorner(vertexOfCorner), _vertexCount(cornerCount) {}

    quint32 cornerCount() const { return _cornerCount; }
    quint32 vertexCount() const { return _vertexCount; }
    /// Whether each corner is a vertex of its own; then the entries of vertexOfCorner() are unspecified.
    bool isIdentity() const { return _firstCorner == nullptr; }
    quint32* vertexOfCorner() const { return _vertexOfCorner; }
    /// The first corner of each vertex; null for the identity.
    const quint32* firstCorner() const { return isIdentity() ? nullptr : _firstCorner->as<quint32>(); }

    /// Makes the list of first corners, with capacity for one per corner, and returns it for the caller to
    /// fill.
    quint32* makeFirstCorner() {
        _firstCorner = std::make_unique<ScratchBlock>(quint64{_cornerCount} * sizeof(quint32),
                                                      ScratchBlock::Content::Unspecified);
        return _firstCorner->as<quint32>();
    }
    /// The list of first corners. This object must not be used afterwards.
    std::unique_ptr<ScratchBlock> takeFirstCorner() { return std::move(_firstCorner); }
    void setVertexCount(quint32 count) { _vertexCount = count; }

private:
    quint32 _cornerCount;
    quint32* _vertexOfCorner;
    quint32 _vertexCount;
    std::unique_ptr<ScratchBlock> _firstCorner;
};

} // namespace Atelier::Vel
