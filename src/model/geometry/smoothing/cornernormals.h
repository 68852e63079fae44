#pragma once

#include <vector>

#include <QtCore/QtGlobal>

#include "geometry/merging/cornerattribute.h"
#include "geometry/merging/mergeoptions.h"
#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// Faces whose corners have positions. The data are not trusted: positions that do not exist are zero, and
/// corners beyond `cornerCount` do not exist.
struct CornerFaces {
    CornerAttribute positions;             ///< three floats each
    quint32 cornerCount = 0;               ///< of all faces
    const quint32* cornerCounts = nullptr; ///< of each face; null if all have `uniformCorners`
    quint64 faceCount = 0;
    quint32 uniformCorners = 0;
    const quint32* groups = nullptr; ///< the smoothing group of each face, 0 for none; null for no groups
};

struct CornerNormalRule {
    /// The maximum angle between the normals of two faces that are smoothed, in degrees. Not used with
    /// groups.
    float creaseAngle = 0;
    bool outward = false;
};

/// Which corners get a normal: those whose entry in `numbers` is `missing`. The entry becomes the number of
/// the normal, counted from `first`.
struct CornerNumbers {
    quint32* numbers;
    quint32 missing;
    quint32 first;
};

struct CornerNormals {
    std::vector<float> normals; ///< three floats each
    quint64 comparisons = 0;    ///< of the normals of two faces
};

/// Makes a normal for each corner that has none: the sum of the normals of the faces at its position,
/// each weighted by the angle of its corner there, then normalised. "At its position" is by the bytes.
/// The normal of a face is Newell's: the sum of the cross products along its boundary.
///
/// Without groups, the sum contains the faces whose normals differ from that of the corner's face by up to
/// the crease angle, with a tolerance of 0.1 degrees; an angle that is not a number counts as 0. At a
/// position of more than 256 corners, face normals are first collected in 216 cells around the sphere, of at
/// most 26 degrees, and the means of the cells are compared. So the time is linear.
///
/// With groups, the sum contains the faces of the same group. A face without a group is flat.
///
/// A face without an area, or with a position that is not finite, adds nothing. Without groups its corners
/// get the sum of all faces at their position. If a sum is shorter than 1e-6, the corner gets the normal
/// of its face.
/// Normals point to the side from which a face is seen clockwise, or if outward, counter-clockwise.
///
/// `merging` is used to find equal positions. Its meter counts each corner about four times.
/// Returns: the normals in the order of their positions' first appearance. The same bits on every processor.
/// Cost:    linear, up to 256 comparisons a corner; with groups n log n for the corners of a position.
///          Working memory of 32 bytes per corner and 12 bytes per face.
CornerNormals makeCornerNormals(const CornerFaces& faces, const CornerNormalRule& rule,
                                const CornerNumbers& corners, const MergeOptions& merging);

} // namespace Atelier::Vel
