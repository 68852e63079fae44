#pragma once

#include "geometry/triangulation/polygonscratch.h"

namespace Atelier::Vel {

/// The rank of an ear as one number. The sharpest ear has the maximum key. Of two equally sharp ears, the one
/// with the lower number has the greater key. Zero means no ear.
EarKey earKey(float cosine, int corner);
/// The corner of a key that is not zero.
inline int cornerOf(EarKey key) {
    return static_cast<int>(~static_cast<quint32>(key));
}

/// The remaining corners of a polygon during ear clipping.
struct PolygonRing {
    PolygonScratch& scratch;
    const PlanePoint* points;
    PlanePoint* directions;
    PolygonCorner* corners;
    EarKey* keys;
    const int count;
    const bool isQueued;
    int clipped = 0;

    /// Uses `memory`, whose `points` are the corners.
    PolygonRing(int cornerCount, PolygonScratch& memory);

private:
    template<typename Array>
    static typename Array::value_type* resized(Array& array, int count) {
        array.resize(count);
        return array.data();
    }
};

/// Whether another corner blocked the triangle of `ear` when `ear` got its current neighbours. Corners that
/// were clipped since then still count, because the result applies to that time.
bool isBlocked(const PolygonRing& ring, int ear);

/// Makes two corners neighbours: `after` follows `before` counter-clockwise.
void link(PolygonRing& ring, int before, int after);

/// Updates whether a corner is an ear after its neighbours changed. In a small polygon, a convex corner is
/// tested only when it is the sharpest. Few corners ever are.
void UpdateEar(PolygonRing& ring, int i);

/// Selects the search for corners that block an ear, and prepares it in `scratch`.
void prepareSearch(int count, bool clockwise, PolygonScratch& scratch);

/// Links all corners of a polygon with the winding `clockwise`, and finds its ears.
void makeCorners(bool clockwise, PolygonRing& ring);

/// Reports progress every few hundred corners. Must be called for each corner of a large polygon when it is
/// prepared and when it is clipped.
void reportProgress(const PolygonRing& ring, int corner);

} // namespace Atelier::Vel
