#include "geometry/triangulation/earblockers.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

namespace Atelier::Vel {

namespace {

// The sites of a leaf are tested one after the other. Smaller leaves make a tree that takes more memory and
// steps.
constexpr int kSitesPerLeaf = 8;

// A point closer than this to the start of a side has a zero direction from there. It counts as inside,
// whichever side it is on. The defined limit is 1e-6 for the rounded offset; the excess covers its rounding.
constexpr double kNullRadius = 1.0001e-6;

// The margin of the test itself, doubled to cover the rounding of the offset and of the side.
constexpr double kRegionMargin = 2 * kCrossMargin;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

bool isFinite(const PlanePoint& point) {
    return std::isfinite(point.x) && std::isfinite(point.y);
}

double largest(double low, double high) {
    return std::max(std::fabs(low), std::fabs(high));
}

double distanceToRange(double low, double high) {
    return std::max({low, -high, 0.0});
}

} // namespace

/// The region of the points that the test of one side of a triangle may count as inside. Rounding turns each
/// direction slightly, so the region is a half-plane widened by a wedge: the further a point is from the
/// start, the further outside it may lie. The regions of a thin triangle may have an unbounded intersection.
class EarBlockers::SideRegion {
public:
    explicit SideRegion(const EarSide& side)
        : _x(side.start().x),
          _y(side.start().y),
          _vectorX(side.vector().x),
          _vectorY(side.vector().y),
          _slack(kRegionMargin * std::sqrt(side.squaredVectorLength())) {}

    /// False only if no point of the box can count as inside.
    bool mayMeet(const Box& box) const {
        const double left = double(box.low.x) - _x;
        const double right = double(box.high.x) - _x;
        const double bottom = double(box.low.y) - _y;
        const double top = double(box.high.y) - _y;
        const double maxInside =
            std::max(_vectorX * bottom, _vectorX * top) - std::min(_vectorY * left, _vectorY * right);
        const double reach = largest(left, right) + largest(bottom, top);
        if (maxInside >= -_slack * reach)
            return true;
        const double x = distanceToRange(left, right);
        const double y = distanceToRange(bottom, top);
        return x * x + y * y <= kNullRadius * kNullRadius;
    }

private:
    double _x;
    double _y;
    double _vectorX;
    double _vectorY;
    double _slack; // infinite for a side without a direction
};

void EarBlockers::build(const PlanePoint* points, int count) {
    collectSites(points, count);
    _leafCount = 1;
    while (_leafCount * kSitesPerLeaf < static_cast<int>(_sites.size()))
        _leafCount *= 2;
    sortSites(0, _leafCount);
    for (std::size_t site = 0; site < _sites.size(); ++site)
        for (int corner = _sites[site].firstCorner; corner >= 0; corner = _nextCorner[corner])
            _siteOf[corner] = static_cast<int>(site);
    _boxes.resize(2 * std::size_t(_leafCount));
    for (int node = 2 * _leafCount - 1; node > 0; --node)
        _boxes[node] = fittedBox(node);
}

void EarBlockers::collectSites(const PlanePoint* points, int count) {
    // The directions from a point that is not finite are NaN, and they pass no test.
    std::vector<int> order;
    order.reserve(count);
    for (int corner = 0; corner < count; ++corner)
        if (isFinite(points[corner]))
            order.push_back(corner);
    std::sort(order.begin(), order.end(), [points](int a, int b) {
        return points[a].x < points[b].x || (points[a].x == points[b].x && points[a].y < points[b].y);
    });
    _sites.clear();
    _siteOf.assign(count, -1);
    _nextCorner.assign(count, -1);
    for (int corner : order) {
        if (_sites.empty() || !(_sites.back().point == points[corner]))
            _sites.push_back({points[corner], 0, -1});
        _nextCorner[corner] = std::exchange(_sites.back().firstCorner, corner);
        ++_sites.back().activeCorners;
    }
}

int EarBlockers::firstSite(int leaf) const {
    return static_cast<int>(std::int64_t(_sites.size()) * leaf / _leafCount);
}

void EarBlockers::sortSites(int firstLeaf, int endLeaf) {
    if (endLeaf - firstLeaf < 2)
        return;
    const auto begin = _sites.begin() + firstSite(firstLeaf);
    const auto end = _sites.begin() + firstSite(endLeaf);
    const int middleLeaf = (firstLeaf + endLeaf) / 2;
    const auto byX = [](const Site& a, const Site& b) { return a.point.x < b.point.x; };
    const auto byY = [](const Site& a, const Site& b) { return a.point.y < b.point.y; };
    const auto [left, right] = std::minmax_element(begin, end, byX);
    const auto [bottom, top] = std::minmax_element(begin, end, byY);
    const auto middle = _sites.begin() + firstSite(middleLeaf);
    if (double(right->point.x) - left->point.x > double(top->point.y) - bottom->point.y)
        std::nth_element(begin, middle, end, byX);
    else
        std::nth_element(begin, middle, end, byY);
    sortSites(firstLeaf, middleLeaf);
    sortSites(middleLeaf, endLeaf);
}

EarBlockers::Box EarBlockers::fittedBox(int node) const {
    Box box = {{kInfinity, kInfinity}, {-kInfinity, -kInfinity}};
    const auto include = [&box](const PlanePoint& low, const PlanePoint& high) {
        box.low = {std::min(box.low.x, low.x), std::min(box.low.y, low.y)};
        box.high = {std::max(box.high.x, high.x), std::max(box.high.y, high.y)};
    };
    if (node < _leafCount) {
        const Box* children = _boxes.data() + 2 * std::ptrdiff_t(node);
        include(children[0].low, children[0].high);
        include(children[1].low, children[1].high);
        return box;
    }
    const int leaf = node - _leafCount;
    for (int site = firstSite(leaf); site < firstSite(leaf + 1); ++site)
        if (_sites[site].activeCorners > 0)
            include(_sites[site].point, _sites[site].point);
    return box;
}

void EarBlockers::remove(int corner) {
    const int site = _siteOf[corner];
    if (site < 0 || --_sites[site].activeCorners > 0)
        return;
    int leaf = static_cast<int>(std::int64_t(site) * _leafCount / std::int64_t(_sites.size()));
    while (firstSite(leaf + 1) <= site)
        ++leaf;
    for (int node = _leafCount + leaf; node > 0; node /= 2) {
        const Box box = fittedBox(node);
        if (box.low == _boxes[node].low && box.high == _boxes[node].high)
            return;
        _boxes[node] = box;
    }
}

bool EarBlockers::leafBlocks(int leaf, const EarTriangle& triangle) const {
    const auto end = _sites.begin() + firstSite(leaf + 1);
    return std::any_of(_sites.begin() + firstSite(leaf), end, [&triangle](const Site& site) {
        return site.activeCorners > 0 && triangle.isBlockedBy(site.point);
    });
}

bool EarBlockers::block(const EarTriangle& triangle) const {
    const std::array<SideRegion, 3> regions = {
        SideRegion(triangle.sides()[0]), SideRegion(triangle.sides()[1]), SideRegion(triangle.sides()[2])};
    std::array<int, 64> pending; // at most one node per level of the tree, and one more
    int pendingCount = 0;
    pending[pendingCount++] = 1;
    while (pendingCount > 0) {
        const int node = pending[--pendingCount];
        const Box& box = _boxes[node];
        if (box.low.x > box.high.x ||
            !std::all_of(regions.begin(), regions.end(),
                         [&box](const SideRegion& region) { return region.mayMeet(box); }))
            continue;
        if (node < _leafCount) {
            pending[pendingCount++] = 2 * node;
            pending[pendingCount++] = 2 * node + 1;
        } else if (leafBlocks(node - _leafCount, triangle)) {
            return true;
        }
    }
    return false;
}

} // namespace Atelier::Vel
