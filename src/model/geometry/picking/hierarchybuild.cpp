#include "geometry/picking/hierarchybuild.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace Atelier::Vel {

namespace {

using Node = TriangleHierarchy::Node;

constexpr int kBins = 16;
// Larger leaves are always divided.
constexpr quint32 kLargestLeaf = 8;
// Visiting a node and its two boxes takes about as long as testing this many triangles.
constexpr double kNodeCost = 1.5;
// Below it, halving 2^32 triangles adds 32 levels at most.
constexpr int kMaxPlaneDepth = TriangleHierarchy::kMaxDepth - 32;
// Centres that are closer are not divided by planes: the width of a bin could not be inverted.
constexpr float kSmallestExtent = 1e-30F;

struct Box {
    float minimum[3] = {kFar, kFar, kFar};
    float maximum[3] = {-kFar, -kFar, -kFar};

    void include(const float* low, const float* high) {
        for (int axis = 0; axis < 3; ++axis) {
            minimum[axis] = low[axis] < minimum[axis] ? low[axis] : minimum[axis];
            maximum[axis] = high[axis] > maximum[axis] ? high[axis] : maximum[axis];
        }
    }
    double surface() const {
        const auto extent = [&](int axis) { return double(maximum[axis]) - double(minimum[axis]); };
        return extent(0) * extent(1) + extent(1) * extent(2) + extent(2) * extent(0);
    }

private:
    static constexpr float kFar = std::numeric_limits<float>::infinity();
};

/// The box of a triangle.
struct BoxedTriangle {
    float minimum[3];
    quint32 firstIndex;
    float maximum[3];
    quint32 number;

    // A quarter of the sum: sums and differences of such centres do not overflow.
    float centre(int axis) const { return 0.25F * minimum[axis] + 0.25F * maximum[axis]; }
};

struct Bin {
    Box box;
    quint32 count = 0;
};

/// A node whose triangles are not divided yet.
struct Task {
    quint32 node;
    quint32 first;
    quint32 count;
    int depth;
};

/// How the centres of some triangles are divided among bins.
struct Binning {
    int axis;
    float begin;
    float binsPerUnit;

    int binOf(const BoxedTriangle& triangle) const {
        return std::min(int((triangle.centre(axis) - begin) * binsPerUnit), kBins - 1);
    }
};

class Builder {
public:
    explicit Builder(const PickingMesh& mesh) : _mesh(mesh) {}

    HierarchyBuild build();

private:
    void collectTriangles();
    void addTriangle(quint64 firstIndex, quint32 number);
    void divide(const Task& task);
    void divideAtPlane(const Task& task, const Binning& binning, double surface);
    void divideInHalves(const Task& task, int axis);
    void makeLeaf(const Task& task);
    void makeChildren(const Task& task, quint32 leftCount);
    void orderTriangles();

    BoxedTriangle* begin(const Task& task) { return _boxed.data() + task.first; }
    BoxedTriangle* end(const Task& task) { return begin(task) + task.count; }

    const PickingMesh& _mesh;
    std::vector<BoxedTriangle> _boxed;
    std::vector<Task> _tasks;
    HierarchyBuild _result;
};

HierarchyBuild Builder::build() {
    collectTriangles();
    if (!_boxed.empty()) {
        _result.nodes.emplace_back();
        _tasks.push_back({0, 0, quint32(_boxed.size()), 1});
    }
    while (!_tasks.empty()) {
        const Task task = _tasks.back();
        _tasks.pop_back();
        divide(task);
    }
    _result.nodes.shrink_to_fit();
    orderTriangles();
    return std::move(_result);
}

void Builder::collectTriangles() {
    quint64 count = 0;
    for (const TriangleRange& range : _mesh.ranges)
        count += range.triangles;
    _boxed.reserve(count);
    quint32 number = 0;
    for (const TriangleRange& range : _mesh.ranges)
        for (quint32 i = 0; i < range.triangles; ++i)
            addTriangle(range.firstIndex + quint64{3} * i, number++);
}

void Builder::addTriangle(quint64 firstIndex, quint32 number) {
    if (firstIndex + 3 > _mesh.indexCount)
        return;
    const quint32* const vertices = _mesh.indices + firstIndex;
    for (int i = 0; i < 3; ++i)
        if (!_mesh.positions.contains(vertices[i]))
            return;
    const TriangleCorners corners = _mesh.positions.cornersOf(vertices);
    if (!canBeHit(corners))
        return;
    Box box;
    for (const auto& corner : corners.at)
        box.include(corner, corner);
    BoxedTriangle& boxed = _boxed.emplace_back();
    std::copy_n(box.minimum, 3, boxed.minimum);
    std::copy_n(box.maximum, 3, boxed.maximum);
    boxed.firstIndex = quint32(firstIndex);
    boxed.number = number;
}

void Builder::divide(const Task& task) {
    Box box;
    Box centres;
    std::for_each(begin(task), end(task), [&](const BoxedTriangle& triangle) {
        box.include(triangle.minimum, triangle.maximum);
        const float centre[3] = {triangle.centre(0), triangle.centre(1), triangle.centre(2)};
        centres.include(centre, centre);
    });
    Node& node = _result.nodes[task.node];
    std::copy_n(box.minimum, 3, node.minimum);
    std::copy_n(box.maximum, 3, node.maximum);
    if (task.count == 1)
        return makeLeaf(task);

    const auto extent = [&](int axis) { return centres.maximum[axis] - centres.minimum[axis]; };
    int axis = extent(1) > extent(0) ? 1 : 0;
    axis = extent(2) > extent(axis) ? 2 : axis;
    if (extent(axis) >= kSmallestExtent && task.depth < kMaxPlaneDepth)
        divideAtPlane(task, {axis, centres.minimum[axis], float(kBins) / extent(axis)}, box.surface());
    else if (task.count <= kLargestLeaf)
        makeLeaf(task);
    else
        divideInHalves(task, axis);
}

/// The last bin of the left side.
struct Plane {
    int lastBin = 0;
    double cost = std::numeric_limits<double>::infinity();
};

Plane bestPlane(const std::array<Bin, kBins>& bins) {
    double rightCosts[kBins] = {};
    Bin right;
    for (int i = kBins - 1; i > 0; --i) {
        right.box.include(bins[std::size_t(i)].box.minimum, bins[std::size_t(i)].box.maximum);
        right.count += bins[std::size_t(i)].count;
        rightCosts[i] = right.box.surface() * right.count;
    }
    Plane best;
    Bin left;
    for (int i = 0; i + 1 < kBins; ++i) {
        left.box.include(bins[std::size_t(i)].box.minimum, bins[std::size_t(i)].box.maximum);
        left.count += bins[std::size_t(i)].count;
        const double cost = left.box.surface() * left.count + rightCosts[i + 1];
        if (cost < best.cost)
            best = {i, cost};
    }
    return best;
}

// The first and the last bin contain triangles, so both sides do.
void Builder::divideAtPlane(const Task& task, const Binning& binning, double surface) {
    std::array<Bin, kBins> bins;
    std::for_each(begin(task), end(task), [&](const BoxedTriangle& triangle) {
        Bin& bin = bins[std::size_t(binning.binOf(triangle))];
        bin.box.include(triangle.minimum, triangle.maximum);
        ++bin.count;
    });
    const Plane plane = bestPlane(bins);
    if (task.count <= kLargestLeaf && plane.cost + kNodeCost * surface >= surface * task.count)
        return makeLeaf(task);
    const BoxedTriangle* const middle =
        std::partition(begin(task), end(task), [&](const BoxedTriangle& triangle) {
            return binning.binOf(triangle) <= plane.lastBin;
        });
    makeChildren(task, quint32(middle - begin(task)));
}

void Builder::divideInHalves(const Task& task, int axis) {
    const quint32 half = task.count / 2;
    std::nth_element(
        begin(task), begin(task) + half, end(task),
        [&](const BoxedTriangle& a, const BoxedTriangle& b) { return a.centre(axis) < b.centre(axis); });
    makeChildren(task, half);
}

void Builder::makeLeaf(const Task& task) {
    _result.nodes[task.node].first = task.first;
    _result.nodes[task.node].triangles = task.count;
}

void Builder::makeChildren(const Task& task, quint32 leftCount) {
    const auto left = quint32(_result.nodes.size());
    _result.nodes[task.node].first = left;
    _result.nodes[task.node].triangles = 0;
    _result.nodes.resize(left + 2);
    _tasks.push_back({left + 1, task.first + leftCount, task.count - leftCount, task.depth + 1});
    _tasks.push_back({left, task.first, leftCount, task.depth + 1});
}

void Builder::orderTriangles() {
    _result.triangles.reserve(_boxed.size());
    for (const BoxedTriangle& boxed : _boxed) {
        const quint32* const vertices = _mesh.indices + boxed.firstIndex;
        _result.triangles.push_back({{vertices[0], vertices[1], vertices[2]}, boxed.number});
    }
}

} // namespace

bool canBeHit(const TriangleCorners& corners) {
    double a[3];
    double b[3];
    for (int axis = 0; axis < 3; ++axis) {
        for (const auto& corner : corners.at)
            if (!std::isfinite(corner[axis]))
                return false;
        a[axis] = double(corners.at[1][axis]) - double(corners.at[0][axis]);
        b[axis] = double(corners.at[2][axis]) - double(corners.at[0][axis]);
    }
    return a[1] * b[2] != a[2] * b[1] || a[2] * b[0] != a[0] * b[2] || a[0] * b[1] != a[1] * b[0];
}

HierarchyBuild buildHierarchy(const PickingMesh& mesh) {
    return Builder(mesh).build();
}

} // namespace Atelier::Vel
