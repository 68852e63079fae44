// Compares Triangulate3D and FindDegenerateTriangle with their literal versions, and one triangulator for
// many faces with single calls. An input is a polygon: the format of its numbers, its size, a normal, its
// corners, its positions.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "bytesource.h"
#include "claim.h"
#include "geometry/triangulation/polygontriangulator.h"
#include "triangulationoutcome.h"

using namespace Atelier::Vel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

// More than 64 corners, from which on another search is used.
constexpr unsigned int kMaxCorners = 72;

enum class Writing : unsigned int {
    kFlat,    ///< small integers, z is zero
    kSpatial, ///< small integers
    kScaled,  ///< small integers, all times one power of two
    kBits,    ///< floats of any bits
    kCount
};

class PositionReader {
public:
    PositionReader(Fuzzing::ByteSource& source, Writing writing)
        : _source(source),
          _writing(writing),
          _exponent(writing == Writing::kScaled ? source.take<std::int8_t>() : 0) {}

    float next(int axis) {
        if (_writing == Writing::kFlat && axis == 2)
            return 0;
        if (_writing == Writing::kBits)
            return _source.take<float>();
        return std::ldexp(static_cast<float>(_source.take<std::int8_t>()), _exponent);
    }

private:
    Fuzzing::ByteSource& _source;
    Writing _writing;
    int _exponent;
};

Testing::TestPolygon polygonFrom(Fuzzing::ByteSource& source) {
    const auto writing = static_cast<Writing>(source.below(static_cast<unsigned int>(Writing::kCount)));
    const bool usesCornersTwice = source.below(4) == 3;
    const unsigned int count = source.below(kMaxCorners);
    PositionReader reader(source, writing);
    Testing::TestPolygon polygon;
    for (int axis = 0; axis < 3; ++axis)
        polygon.normal[axis] = static_cast<float>(source.take<std::int8_t>()) / 127;
    for (unsigned int corner = 0; corner < count; ++corner)
        polygon.corners.push_back(static_cast<int>(usesCornersTwice ? source.below(count) : corner));
    for (unsigned int i = 0; i < 3 * count; ++i)
        polygon.positions.push_back(reader.next(static_cast<int>(i % 3)));
    return polygon;
}

/// The cut that uploads use, twice with the same working memory.
bool cutsAgain(const Testing::TestPolygon& polygon, const QVector<unsigned int>& expected) {
    PolygonTriangulator triangulator;
    for (int round = 0; round < 2; ++round) {
        std::vector<unsigned int> triangles(3 * polygon.corners.size());
        unsigned int* const end = triangulator.triangulate(polygon.count(), polygon.corners.data(),
                                                           polygon.positions.data(), triangles.data());
        if (!std::equal(expected.begin(), expected.end(), triangles.begin(),
                        triangles.begin() + (end - triangles.data())))
            return false;
    }
    return true;
}

/// Uses the same numbers as points of the plane, and the corners as triangles. The literal search requires
/// complete triangles.
bool findsTheSameDegenerateTriangles(const Testing::TestPolygon& polygon) {
    const std::vector<unsigned int> indices(polygon.corners.begin(), polygon.corners.end());
    const int count = polygon.count() / 3 * 3;
    for (int start = 0; start < count; start += 3)
        if (FindDegenerateTriangle(count, indices.data(), polygon.positions.data(), start) !=
            Literal::findDegenerateTriangle(count, indices.data(), polygon.positions.data(), start))
            return false;
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Testing::MessageLog log;
    Fuzzing::ByteSource source(data, size);
    const Testing::TestPolygon polygon = polygonFrom(source);
    const Testing::TriangulationOutcome expected = Testing::literalOutcome(polygon, log);
    Fuzzing::require(Testing::libraryOutcome(polygon, log) == expected, "the cut is the literal one");
    Fuzzing::require(cutsAgain(polygon, expected.own), "a triangulator cuts as single calls do");
    Fuzzing::require(findsTheSameDegenerateTriangles(polygon),
                     "degenerate triangles are those of the literal search");
    log.clear();
    return 0;
}
