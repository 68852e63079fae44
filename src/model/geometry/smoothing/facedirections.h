#pragma once

#include <functional>
#include <vector>

#include "geometry/smoothing/angles.h"
#include "geometry/smoothing/cornernormals.h"

namespace Atelier::Vel {

/// The normals of faces, and the angles of their corners.
class FaceDirections {
public:
    /// Calls `count` with the number of corners of each face.
    FaceDirections(const CornerFaces& faces, const std::function<void(quint32 corners)>& count);

    /// The face of a corner. Corners of no face have an additional face without a normal.
    quint32 faceOf(quint32 corner) const { return _faceOf[corner]; }
    /// The normal of a corner's face, of length 1, on the side from which it is seen counter-clockwise. Zero
    /// for a face without an area and for one with a position that is not finite.
    Direction normalOf(quint32 corner) const { return fromOrigin(_normals[_faceOf[corner]]); }
    /// The angle of the face at a corner, from 0 to two pi; 0 if two corners in sequence have equal
    /// positions.
    double angleOf(quint32 corner) const { return double(_angles[corner]); }

private:
    void addFace(quint64 first, quint64 end);
    Direction positionOf(quint64 corner) const;
    Direction normalOfFace(quint64 first, quint64 end) const;
    void setAngles(quint64 first, quint64 end, const Direction& normal);

    const CornerFaces& _faces;
    std::vector<SpacePoint> _normals;
    std::vector<quint32> _faceOf;
    std::vector<float> _angles;
};

} // namespace Atelier::Vel
