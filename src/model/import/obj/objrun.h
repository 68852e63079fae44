#pragma once

#include <algorithm>
#include <cstddef>

#include <QtCore/QtGlobal>

#include "mesh/cornerlist.h"

namespace Atelier::Vel {

/// A list with a capacity of `N` items, stored in place. The items are not initialised.
template<typename T, size_t N>
struct FixedList {
    size_t size = 0;
    T items[N];

    size_t freeCapacity() const { return N - size; }
    void push(T item) { items[size++] = item; }
};

/// Records of an OBJ file that were read and not yet added to a mesh: one list per kind, in file order.
struct ObjRun {
    // Enough records to make adding them cheap, and few enough to stay in the nearest caches.
    static constexpr size_t kRecords = 1024;
    static constexpr size_t kCorners = 4 * kRecords;
    static constexpr size_t kPlainCorners = 64;

    FixedList<float, 3 * kRecords> positions; ///< three per "v" line
    FixedList<float, 3 * kRecords> normals;   ///< three per "vn" line
    FixedList<float, 2 * kRecords> texCoords; ///< two per "vt" line

    FixedList<quint32, kRecords> cornerCounts; ///< one per face
    // One entry per corner in each list; kNoIndex if the face has no index.
    FixedList<quint32, kCorners> positionIndices;
    FixedList<quint32, kCorners> normalIndices;
    FixedList<quint32, kCorners> texCoordIndices;

    /// The number of lines that fit, if they are any vertex lines or faces of up to kPlainCorners corners.
    size_t lineCapacityLeft() const {
        return std::min({positions.freeCapacity() / 3, normals.freeCapacity() / 3,
                         texCoords.freeCapacity() / 2, cornerCounts.freeCapacity(),
                         positionIndices.freeCapacity() / kPlainCorners});
    }
    bool isFull() const { return lineCapacityLeft() == 0; }

    /// Adds the face whose corners were written after the end of the corner lists.
    void addFace(size_t corners) {
        cornerCounts.push(static_cast<quint32>(corners));
        positionIndices.size += corners;
        normalIndices.size += corners;
        texCoordIndices.size += corners;
    }
};

} // namespace Atelier::Vel
