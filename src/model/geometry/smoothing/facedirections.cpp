#include "geometry/smoothing/facedirections.h"

#include <algorithm>
#include <cstring>

namespace Atelier::Vel {

namespace {

/// The angle at `corner`, on the side of the face whose normal is `normal`.
double interiorAngle(const Direction& before, const Direction& corner, const Direction& after,
                     const Direction& normal) {
    const Direction toBefore = unitDirection(before - corner);
    const Direction toAfter = unitDirection(after - corner);
    if (isZero(toBefore) || isZero(toAfter))
        return 0;
    const double angle = angleBetween(toBefore, toAfter);
    return dotProduct(crossProduct(toAfter, toBefore), normal) < 0 ? 2 * kPi - angle : angle;
}

} // namespace

FaceDirections::FaceDirections(const CornerFaces& faces, const std::function<void(quint32 corners)>& count)
    : _faces(faces), _faceOf(faces.cornerCount), _angles(faces.cornerCount) {
    _normals.reserve(faces.faceCount + 1);
    quint64 first = 0;
    for (quint64 face = 0; face < faces.faceCount && first < faces.cornerCount; ++face) {
        const quint32 corners =
            faces.cornerCounts == nullptr ? faces.uniformCorners : faces.cornerCounts[face];
        const quint64 end = std::min<quint64>(first + corners, faces.cornerCount);
        addFace(first, end);
        count(static_cast<quint32>(end - first));
        first = end;
    }
    _normals.resize(faces.faceCount + 1);
    std::fill(_faceOf.begin() + static_cast<std::ptrdiff_t>(first), _faceOf.end(),
              static_cast<quint32>(faces.faceCount));
}

void FaceDirections::addFace(quint64 first, quint64 end) {
    std::fill(_faceOf.begin() + static_cast<std::ptrdiff_t>(first),
              _faceOf.begin() + static_cast<std::ptrdiff_t>(end), static_cast<quint32>(_normals.size()));
    const Direction normal = normalOfFace(first, end);
    _normals.push_back({float(normal.x), float(normal.y), float(normal.z)});
    if (!isZero(normal))
        setAngles(first, end, normal);
}

Direction FaceDirections::positionOf(quint64 corner) const {
    SpacePoint point = {};
    const quint64 number = _faces.positions.valueOf(corner);
    if (number != _faces.positions.valueCount)
        std::memcpy(&point, _faces.positions.values + number * sizeof point, sizeof point);
    return fromOrigin(point);
}

// Relative to the first corner, so that a face far from the origin keeps its digits.
Direction FaceDirections::normalOfFace(quint64 first, quint64 end) const {
    if (end - first < 3)
        return {};
    const Direction origin = positionOf(first);
    Direction sum;
    Direction before = positionOf(first + 1) - origin;
    for (quint64 corner = first + 2; corner < end; ++corner) {
        const Direction at = positionOf(corner) - origin;
        sum = sum + crossProduct(before, at);
        before = at;
    }
    return unitDirection(sum);
}

void FaceDirections::setAngles(quint64 first, quint64 end, const Direction& normal) {
    Direction before = positionOf(end - 1);
    Direction at = positionOf(first);
    for (quint64 corner = first; corner < end; ++corner) {
        const Direction after = positionOf(corner + 1 < end ? corner + 1 : first);
        _angles[corner] = static_cast<float>(interiorAngle(before, at, after, normal));
        before = at;
        at = after;
    }
}

} // namespace Atelier::Vel
