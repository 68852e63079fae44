#pragma once

#include <cstdint>

#include <QtCore/QHash>
#include <QtCore/QVector>

#include <velgl/drawelementsindirectcommand.h>
#include <velgl/gpumodel.h>

namespace Atelier::Vel {

/// The part of a command that decides which positions it draws.
struct DrawnRange {
    std::uint32_t firstIndex = 0;
    std::uint32_t count = 0;
    std::uint32_t baseVertex = 0;

    friend bool operator==(const DrawnRange& a, const DrawnRange& b) {
        return a.firstIndex == b.firstIndex && a.count == b.count && a.baseVertex == b.baseVertex;
    }
    friend uint qHash(const DrawnRange& range, uint seed) {
        return ::qHash(quint64(range.firstIndex) << 32 | range.count, seed) ^
               ::qHash(range.baseVertex, ~seed);
    }
};

/// The buffers behind the boxes of a drawable, and how they are read.
struct BoxSource {
    quint64 positions = 0; ///< BufferAccess::contentRevision()
    quint64 indices = 0;   ///< BufferAccess::contentRevision()
    int components = 0;
    unsigned int type = 0;
    unsigned int indexType = 0;

    /// Returns: whether both have the same content. Contents without a revision may always differ.
    bool isSameAs(const BoxSource& other) const {
        return positions != 0 && positions == other.positions && indices != 0 && indices == other.indices &&
               components == other.components && type == other.type && indexType == other.indexType;
    }
};

/// The known boxes of one drawable for one attribute.
struct DrawableBoxes {
    BoxSource source;
    QHash<DrawnRange, GPUModel::Bounds> ranges;

    bool isTotalKnown = false;
    QVector<DrawElementsIndirectCommand> commands; ///< those of `total`
    quint64 visibilityRevision = 0;                ///< that of `total`
    int indexCount = 0;                            ///< that of `total`
    GPUModel::Bounds total;
};

} // namespace Atelier::Vel
