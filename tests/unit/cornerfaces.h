#pragma once

#include <vector>

#include "geometry/smoothing/cornernormals.h"
#include "support/guardedarray.h"

namespace Atelier::Vel::Testing {

constexpr quint32 kMissing = 0xFFFFFFF0;

/// Faces over guarded arrays.
class TestFaces {
public:
    /// `positions` holds three floats each.
    TestFaces(const std::vector<float>& positions, const std::vector<std::vector<quint32>>& faces,
              const std::vector<quint32>& groups = {})
        : _positions(positions), _corners(cornersOf(faces)), _counts(countsOf(faces)), _groups(groups) {
        _faces.positions.values = reinterpret_cast<const unsigned char*>(_positions.data());
        _faces.positions.stride = 3 * sizeof(float);
        _faces.positions.valueCount = _positions.size() / 3;
        _faces.positions.indices = _corners.data();
        _faces.positions.indexCount = _corners.size();
        _faces.cornerCount = static_cast<quint32>(_corners.size());
        _faces.cornerCounts = _counts.data();
        _faces.faceCount = _counts.size();
        if (!groups.empty())
            _faces.groups = _groups.data();
    }

    CornerFaces& operator*() { return _faces; }
    CornerFaces* operator->() { return &_faces; }

private:
    static std::vector<quint32> cornersOf(const std::vector<std::vector<quint32>>& faces) {
        std::vector<quint32> corners;
        for (const auto& face : faces)
            corners.insert(corners.end(), face.begin(), face.end());
        return corners;
    }
    static std::vector<quint32> countsOf(const std::vector<std::vector<quint32>>& faces) {
        std::vector<quint32> counts;
        for (const auto& face : faces)
            counts.push_back(static_cast<quint32>(face.size()));
        return counts;
    }

    GuardedArray<float> _positions;
    GuardedArray<quint32> _corners;
    GuardedArray<quint32> _counts;
    GuardedArray<quint32> _groups;
    CornerFaces _faces;
};

/// A cube from (-1, -1, -1) to (1, 1, 1), counter-clockwise from outside.
inline std::vector<float> cubePositions() {
    std::vector<float> positions;
    for (int i = 0; i < 8; ++i)
        for (int axis = 0; axis < 3; ++axis)
            positions.push_back((i >> axis & 1) != 0 ? 1.0F : -1.0F);
    return positions;
}
inline std::vector<std::vector<quint32>> cubeFaces() {
    return {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
}

} // namespace Atelier::Vel::Testing
