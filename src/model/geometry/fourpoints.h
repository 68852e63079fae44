#pragma once

#if defined(__SSE2__)

#include <emmintrin.h>

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

/// Four points or directions in space side by side. Each lane's operations are those of a SpacePoint.
struct FourPoints {
    __m128 x;
    __m128 y;
    __m128 z;

    friend FourPoints operator+(const FourPoints& p, const FourPoints& q) {
        return {_mm_add_ps(p.x, q.x), _mm_add_ps(p.y, q.y), _mm_add_ps(p.z, q.z)};
    }
    friend FourPoints operator-(const FourPoints& p, const FourPoints& q) {
        return {_mm_sub_ps(p.x, q.x), _mm_sub_ps(p.y, q.y), _mm_sub_ps(p.z, q.z)};
    }
    friend FourPoints operator*(const FourPoints& p, const FourPoints& q) {
        return {_mm_mul_ps(p.x, q.x), _mm_mul_ps(p.y, q.y), _mm_mul_ps(p.z, q.z)};
    }
};

inline __m128 differenceOfProducts(__m128 a, __m128 b, __m128 c, __m128 d) {
    return _mm_sub_ps(_mm_mul_ps(a, b), _mm_mul_ps(c, d));
}

inline FourPoints crossProduct(const FourPoints& p, const FourPoints& q) {
    return {differenceOfProducts(p.y, q.z, p.z, q.y), differenceOfProducts(p.z, q.x, p.x, q.z),
            differenceOfProducts(p.x, q.y, p.y, q.x)};
}

/// Makes each point from four floats. The last float is not used.
inline FourPoints fourPoints(__m128 a, __m128 b, __m128 c, __m128 d) {
    _MM_TRANSPOSE4_PS(a, b, c, d);
    return {a, b, c};
}

/// The positions of corner `corner` of four consecutive faces with `count` corners each. Reads one float
/// beyond each position.
inline FourPoints pointsOfFour(const quint32* corners, int count, int corner, const float* positions) {
    const auto load = [&](int face) {
        return _mm_loadu_ps(positions + 3 * qint64(corners[face * count + corner]));
    };
    return fourPoints(load(0), load(1), load(2), load(3));
}

} // namespace Atelier::Vel

#endif
