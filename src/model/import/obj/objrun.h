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
    /// Requires: `other` fits.
    void append(const FixedList& other) {
        std::copy_n(other.items, other.size, items + size);
        size += other.size;
    }
};

/// The colour of a "v" line. A line of six numbers has red, green and blue after its position, and a line of
/// seven numbers also has alpha. Other lines have no colour and count as white.
struct ObjColour {
    static constexpr size_t kSize = 4;

    float values[kSize] = {1.0F, 1.0F, 1.0F, 1.0F};
    int components = 0; ///< that the line has: 0, 3 or 4

    ObjColour() = default;
    /// `count` is the number of numbers after the position.
    ObjColour(const float* numbers, size_t count) {
        if (count != 3 && count != kSize)
            return;
        std::copy_n(numbers, count, values);
        components = static_cast<int>(count);
    }
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

    bool takesColours = false;                             ///< whether colours are read
    FixedList<float, ObjColour::kSize * kRecords> colours; ///< if so, four per "v" line
    int colourComponents = 0;                              ///< the maximum of these lines

    /// The number of lines that fit, if they are any vertex lines or faces of up to kPlainCorners corners.
    size_t lineCapacityLeft() const {
        return std::min({positions.freeCapacity() / 3, normals.freeCapacity() / 3,
                         texCoords.freeCapacity() / 2, cornerCounts.freeCapacity(),
                         positionIndices.freeCapacity() / kPlainCorners});
    }
    /// The number of records in all lists.
    size_t records() const {
        return positions.size / 3 + normals.size / 3 + texCoords.size / 2 + cornerCounts.size;
    }
    void clear() {
        positions.size = normals.size = texCoords.size = cornerCounts.size = 0;
        positionIndices.size = normalIndices.size = texCoordIndices.size = 0;
        colours.size = 0;
        colourComponents = 0;
    }
    bool isFull() const { return lineCapacityLeft() == 0; }
    /// Whether the records of `other` fit.
    bool hasRoomFor(const ObjRun& other) const {
        return positions.freeCapacity() >= other.positions.size &&
               normals.freeCapacity() >= other.normals.size &&
               texCoords.freeCapacity() >= other.texCoords.size &&
               cornerCounts.freeCapacity() >= other.cornerCounts.size &&
               positionIndices.freeCapacity() >= other.positionIndices.size;
    }
    /// Adds the records of `other`. Requires: they fit, and `other` takes colours if this run does.
    void append(const ObjRun& other) {
        positions.append(other.positions);
        normals.append(other.normals);
        texCoords.append(other.texCoords);
        cornerCounts.append(other.cornerCounts);
        positionIndices.append(other.positionIndices);
        normalIndices.append(other.normalIndices);
        texCoordIndices.append(other.texCoordIndices);
        if (!takesColours)
            return;
        colours.append(other.colours);
        colourComponents = std::max(colourComponents, other.colourComponents);
    }

    void addColour(const ObjColour& colour) {
        std::copy_n(colour.values, ObjColour::kSize, colours.items + colours.size);
        colours.size += ObjColour::kSize;
        colourComponents = std::max(colourComponents, colour.components);
    }

    /// Adds the face whose corners were written after the end of the corner lists.
    void addFace(size_t corners) {
        cornerCounts.push(static_cast<quint32>(corners));
        positionIndices.size += corners;
        normalIndices.size += corners;
        texCoordIndices.size += corners;
    }
};

} // namespace Atelier::Vel
