#pragma once

#include <algorithm>
#include <limits>

#include "streams/streamview.h"

namespace Atelier::Vel {

/// Faces that all have the same number of corners.
struct UniformFaces {
    quint32 corners = 0; ///< per face; 0 if there are no faces
    quint64 count = 0;
};

/// The corners of a face, as vertex numbers.
struct FaceCorners {
    const quint32* vertices = nullptr;
    quint32 count = 0;
    bool exist = false;
};

/// The data that face numbers refer to. The data are not trusted: faces that are not completely inside the
/// table do not exist, and missing positions are zero.
struct FaceTable {
    static constexpr quint64 kPositionBytes = 3 * sizeof(float);

    WordView counts;                 ///< corners per face
    const quint32* starts = nullptr; ///< first corner per face
    quint64 startCount = 0;
    UniformFaces uniform; ///< replaces counts and starts if it has corners
    WordView corners;     ///< vertex number per corner
    ByteView positions;   ///< three floats per vertex

    bool isUniform() const { return uniform.corners != 0; }
    /// The number of faces. countOf() and startOf() require a face number below it.
    quint64 faceCount() const { return isUniform() ? uniform.count : std::min(counts.count, startCount); }
    quint32 countOf(quint32 face) const { return isUniform() ? uniform.corners : counts.words[face]; }
    quint32 startOf(quint32 face) const { return isUniform() ? face * uniform.corners : starts[face]; }

    /// The corners of a face. Any face number is allowed.
    FaceCorners cornersOf(quint32 face) const {
        if (face >= faceCount())
            return {};
        const quint32 start = startOf(face);
        const quint32 count = countOf(face);
        if (quint64{start} + count > corners.count)
            return {};
        return {corners.words + start, count, true};
    }

    /// The number of complete positions.
    quint32 wholePositions() const {
        return static_cast<quint32>(
            std::min<quint64>(positions.count / kPositionBytes, std::numeric_limits<quint32>::max()));
    }
};

} // namespace Atelier::Vel
