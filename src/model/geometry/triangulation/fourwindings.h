#pragma once

#include "geometry/fourpoints.h"
#include "geometry/triangulation/windingfilter.h"

namespace Atelier::Vel {

/// Each mask has one bit for each of four faces.
struct FourWindings {
    unsigned int clockwise;
    unsigned int undecided;
};

#if defined(__SSE2__)

namespace WindingFilter {

inline __m128 sum(__m128 a, __m128 b, __m128 c) {
    return _mm_add_ps(_mm_add_ps(a, b), c);
}

/// Like winding(), but for four faces. Each sum has its terms in the same order.
inline FourWindings windings(const FourPoints& normal, const FourPoints& area,
                             const FourPoints& squaredSizes) {
    const FourPoints squares = normal * normal;
    const FourPoints products = area * normal;
    const __m128 squaredNormal = sum(squares.z, squares.x, squares.y);
    const __m128 squaredSize = sum(squaredSizes.x, squaredSizes.y, squaredSizes.z);
    const __m128 projected = sum(products.z, products.x, products.y);
    const __m128 margin =
        _mm_mul_ps(_mm_mul_ps(_mm_set1_ps(kMargin), squaredSize), _mm_sqrt_ps(squaredNormal));
    const __m128 size = _mm_andnot_ps(_mm_set1_ps(-0.0F), projected);
    const __m128 isNull =
        _mm_and_ps(_mm_cmple_ps(squaredNormal, _mm_set1_ps(kSurelyNull)),
                   _mm_cmple_ps(squaredSize, _mm_set1_ps(std::numeric_limits<float>::max())));
    const __m128 isDecided = _mm_and_ps(
        _mm_and_ps(_mm_cmpgt_ps(size, margin), _mm_cmpge_ps(squaredNormal, _mm_set1_ps(kSurelyNotNull))),
        _mm_and_ps(_mm_cmpge_ps(squaredSize, _mm_set1_ps(kMinSquaredSize)),
                   _mm_cmple_ps(margin, _mm_set1_ps(kMaxMargin))));
    const auto null = static_cast<unsigned int>(_mm_movemask_ps(isNull));
    const auto decided = static_cast<unsigned int>(_mm_movemask_ps(isDecided));
    const auto positive =
        static_cast<unsigned int>(_mm_movemask_ps(_mm_cmpgt_ps(projected, _mm_setzero_ps())));
    return {decided & ~null & ~positive, ~(decided | null) & 0xF};
}

} // namespace WindingFilter

/// The windings of four consecutive triangles, as quickTriangleWinding() returns them.
/// Requires: every position that they use is followed by another position.
inline FourWindings quickTriangleWindings(const quint32* corners, const float* positions) {
    using namespace WindingFilter;
    const FourPoints p0 = pointsOfFour(corners, 3, 0, positions);
    const FourPoints p1 = pointsOfFour(corners, 3, 1, positions);
    const FourPoints p2 = pointsOfFour(corners, 3, 2, positions);
    const FourPoints normal = crossProduct(p2, p0) + crossProduct(p0, p1) + crossProduct(p1, p2);
    const FourPoints d1 = p1 - p0;
    const FourPoints d2 = p2 - p0;
    return windings(normal, crossProduct(d1, d2), d1 * d1 + d2 * d2);
}

/// The same for four quadrilaterals, as quickQuadrilateralWinding() returns them.
inline FourWindings quickQuadrilateralWindings(const quint32* corners, const float* positions) {
    using namespace WindingFilter;
    const FourPoints p0 = pointsOfFour(corners, 4, 0, positions);
    const FourPoints p1 = pointsOfFour(corners, 4, 1, positions);
    const FourPoints p2 = pointsOfFour(corners, 4, 2, positions);
    const FourPoints p3 = pointsOfFour(corners, 4, 3, positions);
    const FourPoints normal =
        crossProduct(p3, p0) + crossProduct(p0, p1) + crossProduct(p1, p2) + crossProduct(p2, p3);
    const FourPoints d1 = p1 - p0;
    const FourPoints d2 = p2 - p0;
    const FourPoints d3 = p3 - p0;
    return windings(normal, crossProduct(d1, d2) + crossProduct(d2, d3), d1 * d1 + d2 * d2 + d3 * d3);
}

#else

inline FourWindings quickTriangleWindings(const quint32*, const float*) {
    return {0, 0xF};
}

inline FourWindings quickQuadrilateralWindings(const quint32*, const float*) {
    return {0, 0xF};
}

#endif

} // namespace Atelier::Vel
