#include "drawdata/meshorder.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <meshoptimizer.h>

namespace Atelier::Vel {

namespace {

constexpr quint32 kNone = 0xFFFFFFFF;

// The capacity of the modelled cache in vertices. This is the usual size, so that results are comparable.
constexpr unsigned int kCacheSize = 16;

// The maximum factor by which the reduction of overdraw may worsen the use of the vertex cache.
constexpr float kOverdrawThreshold = 1.05F;

constexpr std::size_t kAxes = 3;

bool areFinite(const std::vector<float>& values) {
    return std::all_of(values.begin(), values.end(), [](float value) { return std::isfinite(value); });
}

/// Scales the points to the cube from 0 to 1. The order does not depend on position and size, but products of
/// large coordinates would overflow.
void scaleToUnitCube(std::vector<float>& points) {
    float low[kAxes] = {points[0], points[1], points[2]};
    float high[kAxes] = {points[0], points[1], points[2]};
    for (std::size_t i = 0; i < points.size(); ++i) {
        low[i % kAxes] = std::min(low[i % kAxes], points[i]);
        high[i % kAxes] = std::max(high[i % kAxes], points[i]);
    }
    double extent = 0;
    for (std::size_t axis = 0; axis < kAxes; ++axis)
        extent = std::max(extent, double{high[axis]} - double{low[axis]});
    for (std::size_t i = 0; extent > 0 && i < points.size(); ++i)
        points[i] = static_cast<float>((double{points[i]} - double{low[i % kAxes]}) / extent);
}

} // namespace

TriangleOrder::TriangleOrder(const PositionView& positions, quint64 vertexCount)
    : _positions(positions), _numbers(vertexCount, kNone) {}

bool TriangleOrder::reorder(quint32* indices, quint64 count) {
    if (count == 0)
        return true;
    numberVertices(indices, count);
    const bool isFinite = collectPoints();
    if (isFinite) {
        orderTriangles();
        std::transform(_triangles.begin(), _triangles.end(), indices,
                       [this](quint32 number) { return _vertices[number]; });
    }
    forgetVertices();
    return isFinite;
}

void TriangleOrder::numberVertices(const quint32* indices, quint64 count) {
    _triangles.resize(count);
    for (quint64 i = 0; i < count; ++i) {
        quint32& number = _numbers[indices[i]];
        if (number == kNone) {
            number = static_cast<quint32>(_vertices.size());
            _vertices.push_back(indices[i]);
        }
        _triangles[i] = number;
    }
}

void TriangleOrder::forgetVertices() {
    for (const quint32 vertex : _vertices)
        _numbers[vertex] = kNone;
    _vertices.clear();
}

bool TriangleOrder::collectPoints() {
    _points.resize(_vertices.size() * kAxes);
    const auto* const bytes = static_cast<const unsigned char*>(_positions.data);
    for (std::size_t i = 0; i < _vertices.size(); ++i)
        std::memcpy(&_points[i * kAxes], bytes + _vertices[i] * _positions.components * sizeof(float),
                    kAxes * sizeof(float));
    if (!areFinite(_points))
        return false;
    scaleToUnitCube(_points);
    return true;
}

void TriangleOrder::orderTriangles() {
    const std::size_t count = _triangles.size();
    _reordered.resize(count);
    meshopt_optimizeVertexCache(_reordered.data(), _triangles.data(), count, _vertices.size());
    meshopt_optimizeOverdraw(_triangles.data(), _reordered.data(), count, _points.data(), _vertices.size(),
                             kAxes * sizeof(float), kOverdrawThreshold);
}

// meshoptimizer computes the same order, but only for whole triangles, and it does not number unused
// vertices.
std::vector<quint32> fetchOrder(const quint32* indices, quint64 count, quint64 vertexCount) {
    std::vector<quint32> order(vertexCount, kNone);
    quint32 next = 0;
    for (quint64 i = 0; i < count; ++i)
        if (order[indices[i]] == kNone)
            order[indices[i]] = next++;
    for (quint32& number : order)
        if (number == kNone)
            number = next++;
    return order;
}

DrawData::VertexCacheStatistics cacheStatistics(const quint32* indices, quint64 count, quint64 vertexCount) {
    const meshopt_VertexCacheStatistics statistics =
        meshopt_analyzeVertexCache(indices, count, vertexCount, kCacheSize, 0, 0);
    return {statistics.acmr, statistics.atvr};
}

} // namespace Atelier::Vel
