#pragma once

#include "geometry/triangulation/polygonscratch.h"

namespace Atelier::Vel {

/// The order of the ears as one number: the sharpest has the greatest key, of two equally sharp ones the
/// lower-numbered. Zero is no ear.
EarKey earKey(float cosine, int corner);
/// The corner of a key that is not zero.
inline int cornerOf(EarKey key) {
    return static_cast<int>(~static_cast<quint32>(key));
}

/// What is left of a polygon that is being cut.
struct PolygonRing {
    PolygonScratch& scratch;
    const PlanePoint* points;
    PlanePoint* directions;
    PolygonCorner* corners;
    EarKey* keys;
    const int count;
    const bool isQueued;
    int clipped = 0;

    /// Works in `memory`, whose `points` are the corners.
    PolygonRing(int cornerCount, PolygonScratch& memory);

private:
    template<typename Array>
    static typename Array::value_type* resized(Array& array, int count) {
        array.resize(count);
        return array.data();
    }
};

/// Whether another corner lay in the triangle that clipping `ear` would cut off when it got its neighbours.
/// Corners that were clipped since then count: whether a corner is an ear is decided once.
bool isBlocked(const PolygonRing& ring, int ear);

/// Makes two corners neighbours, `after` the one that follows `before` counter-clockwise.
void link(PolygonRing& ring, int before, int after);

/// Decides again whether a corner is an ear, after its neighbours changed. Of a small polygon, a convex
/// corner is only tested when it is the sharpest: few of them ever are.
void UpdateEar(PolygonRing& ring, int i);

/// Chooses how `scratch` looks for corners that block an ear.
void prepareSearch(int count, bool clockwise, PolygonScratch& scratch);

/// Links all corners of a polygon that is wound as `clockwise` says, and finds its ears.
void makeCorners(bool clockwise, PolygonRing& ring);

/// Reports progress every few hundred corners. To be called for each corner of a large polygon, when it is
/// prepared and when it is clipped.
void reportProgress(const PolygonRing& ring, int corner);

} // namespace Atelier::Vel
