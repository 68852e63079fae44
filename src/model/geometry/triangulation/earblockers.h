#pragma once

#include <vector>

#include "geometry/triangulation/eartriangle.h"

namespace Atelier::Vel {

/// The active corners of a large polygon, sorted in space. Decides whether one of them blocks a candidate
/// triangle without a test of each corner. The result is the same as that of a test of every active corner.
class EarBlockers {
public:
    /// Makes all corners active.
    /// Cost: O(count log count).
    void build(const PlanePoint* points, int count);

    /// Makes the corner inactive.
    /// Cost: O(log count).
    void remove(int corner);

    /// Whether an active corner blocks the triangle.
    /// Cost: about O(log count) plus the number of active corners within rounding of the triangle.
    bool block(const EarTriangle& triangle) const;

private:
    class SideRegion;

    struct Box {
        PlanePoint low;
        PlanePoint high;
    };

    /// All corners at one point. The test depends only on the point.
    struct Site {
        PlanePoint point;
        int activeCorners;
        int firstCorner;
    };

    void collectSites(const PlanePoint* points, int count);
    void sortSites(int firstLeaf, int endLeaf);
    int firstSite(int leaf) const;
    Box fittedBox(int node) const;
    bool leafBlocks(int leaf, const EarTriangle& triangle) const;

    std::vector<Site> _sites;     // in the order of the leaves
    std::vector<int> _siteOf;     // per corner; -1 for a corner that blocks nothing
    std::vector<int> _nextCorner; // per corner, the next corner of its site; -1 after the last
    std::vector<Box> _boxes; // of the active corners: node n has the children 2 n and 2 n + 1, the root is 1
    int _leafCount = 1;      // a power of two; leaf k is node _leafCount + k
};

} // namespace Atelier::Vel
