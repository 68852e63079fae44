#include "geometry/normals.h"

#include <algorithm>
#include <cstddef>

#include "geometry/allbelow.h"
#include "geometry/fourpoints.h"
#include "geometry/qtvectormath.h"

namespace Atelier::Vel {

namespace {

/// The positions of vertices. Positions beyond the end of the array are zero.
struct Positions {
    const float* floats;
    quint64 count;

    /// The number of positions that are followed by another position.
    quint64 countBeforeLast() const { return count < 3 ? 0 : count / 3 - 1; }

    SpacePoint operator[](quint32 vertex) const {
        float padded[3] = {0.0F, 0.0F, 0.0F};
        const quint64 first = std::min(quint64{vertex} * 3, count);
        std::copy(floats + first, floats + std::min(first + 3, count), padded);
        return {padded[0], padded[1], padded[2]};
    }
};

/// Its length is the sine of the angle at `a`. It points to the side from which the triangle is clockwise.
/// This is intentional.
SpacePoint faceNormal(const SpacePoint& a, const SpacePoint& b, const SpacePoint& c) {
    return crossProduct(normalized(c - a), normalized(b - a));
}

/// One normal per vertex: first the sum of the normals of its faces, then normalised.
class Normals {
public:
    Normals(float* floats, quint32 count) : _floats(floats), _count(count) {
        std::fill_n(floats, quint64{count} * 3, 0.0F);
    }

    quint32 count() const { return _count; }
    float* operator[](quint32 vertex) const { return _floats + quint64{vertex} * 3; }

    void add(quint32 vertex, const float* normal) const {
        float* const sum = (*this)[vertex];
        for (int i = 0; i < 3; ++i)
            sum[i] += normal[i];
    }

private:
    float* _floats;
    quint32 _count;
};

void addTriangle(const Positions& points, const quint32* corners, const Normals& sums) {
    const SpacePoint normal = faceNormal(points[corners[0]], points[corners[1]], points[corners[2]]);
    const float floats[] = {normal.x, normal.y, normal.z};
    for (int corner = 0; corner < 3; ++corner)
        if (corners[corner] < sums.count())
            sums.add(corners[corner], floats);
}

void normalizeOne(float* floats) {
    SpacePoint normal = {floats[0], floats[1], floats[2]};
    normalize(normal);
    floats[0] = normal.x;
    floats[1] = normal.y;
    floats[2] = normal.z;
}

#if defined(__SSE2__)

/// Two of four lanes as doubles.
struct Half {
    __m128d x;
    __m128d y;
    __m128d z;
    __m128d squaredLength;

    Half(__m128 fx, __m128 fy, __m128 fz)
        : x(_mm_cvtps_pd(fx)),
          y(_mm_cvtps_pd(fy)),
          z(_mm_cvtps_pd(fz)),
          squaredLength(_mm_add_pd(_mm_add_pd(_mm_mul_pd(x, x), _mm_mul_pd(y, y)), _mm_mul_pd(z, z))) {}

    __m128d isOne() const {
        const __m128d difference = _mm_sub_pd(squaredLength, _mm_set1_pd(1.0));
        return _mm_cmple_pd(_mm_andnot_pd(_mm_set1_pd(-0.0), difference), _mm_set1_pd(kNullLength));
    }
    __m128d isNull() const { return _mm_cmple_pd(squaredLength, _mm_set1_pd(kNullLength)); }
};

__m128 upper(__m128 v) {
    return _mm_movehl_ps(v, v);
}

__m128 joined(__m128d low, __m128d high) {
    return _mm_movelh_ps(_mm_cvtpd_ps(low), _mm_cvtpd_ps(high));
}

/// Joins two masks of two lanes to one of four lanes.
__m128 joinedMasks(__m128d low, __m128d high) {
    return _mm_shuffle_ps(_mm_castpd_ps(low), _mm_castpd_ps(high), _MM_SHUFFLE(2, 0, 2, 0));
}

__m128 chosen(__m128 condition, __m128 yes, __m128 no) {
    return _mm_or_ps(_mm_and_ps(condition, yes), _mm_andnot_ps(condition, no));
}

/// The same as normalized() for each point; if `nullStays`, the same as normalize(), which leaves null
/// vectors unchanged.
FourPoints normalized(const FourPoints& p, bool nullStays) {
    const Half low(p.x, p.y, p.z);
    const Half high(upper(p.x), upper(p.y), upper(p.z));
    const __m128d lowLength = _mm_sqrt_pd(low.squaredLength);
    const __m128d highLength = _mm_sqrt_pd(high.squaredLength);
    const FourPoints divided = {joined(_mm_div_pd(low.x, lowLength), _mm_div_pd(high.x, highLength)),
                                joined(_mm_div_pd(low.y, lowLength), _mm_div_pd(high.y, highLength)),
                                joined(_mm_div_pd(low.z, lowLength), _mm_div_pd(high.z, highLength))};
    const __m128 isOne = joinedMasks(low.isOne(), high.isOne());
    const __m128 isNull = joinedMasks(low.isNull(), high.isNull());
    const __m128 isSpecial = _mm_or_ps(isOne, isNull);
    if (_mm_movemask_ps(isSpecial) == 0)
        return divided;
    const __m128 stays = nullStays ? isSpecial : isOne;
    const auto choose = [&](__m128 original, __m128 quotient) {
        return chosen(stays, original, _mm_andnot_ps(isSpecial, quotient));
    };
    return {choose(p.x, divided.x), choose(p.y, divided.y), choose(p.z, divided.z)};
}

/// Four directions of four floats each. The last float is zero.
struct FourDirections {
    __m128 each[4];

    explicit FourDirections(const FourPoints& p) : each{p.x, p.y, p.z, _mm_setzero_ps()} {
        _MM_TRANSPOSE4_PS(each[0], each[1], each[2], each[3]);
    }
};

void storeThree(float* floats, __m128 three) {
    _mm_storel_pi(reinterpret_cast<__m64*>(floats), three);
    _mm_store_ss(floats + 2, _mm_movehl_ps(three, three));
}

void addThree(float* floats, __m128 three) {
    const __m128 two = _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(floats)));
    const __m128 one = _mm_load_ss(floats + 2);
    _mm_storel_pi(reinterpret_cast<__m64*>(floats), _mm_add_ps(two, three));
    _mm_store_ss(floats + 2, _mm_add_ss(one, _mm_movehl_ps(three, three)));
}

void addFourTriangles(const float* positions, const quint32* corners, const Normals& sums) {
    const FourPoints a = pointsOfFour(corners, 3, 0, positions);
    const FourPoints b = pointsOfFour(corners, 3, 1, positions);
    const FourPoints c = pointsOfFour(corners, 3, 2, positions);
    const FourDirections normals(crossProduct(normalized(c - a, false), normalized(b - a, false)));
    for (int i = 0; i < 12; ++i)
        addThree(sums[corners[i]], normals.each[i / 3]);
}

/// Returns: the number of triangles that were added.
quint64 addTriangles(const Positions& points, const quint32* corners, quint64 count, const Normals& sums) {
    const quint64 limit = std::min<quint64>(sums.count(), points.countBeforeLast());
    quint64 done = 0;
    for (; done + 4 <= count; done += 4) {
        const quint32* const four = corners + done * 3;
        if (allBelow(four, 12, static_cast<quint32>(limit)))
            addFourTriangles(points.floats, four, sums);
        else
            for (std::size_t i = 0; i < 12; i += 3)
                addTriangle(points, four + i, sums);
    }
    return done;
}

/// Returns: the number of normals that were normalised.
quint32 normalizeAll(const Normals& normals) {
    quint32 vertex = 0;
    // At least one normal is left, because four floats are read for three.
    for (; quint64{vertex} + 5 <= normals.count(); vertex += 4) {
        float* const first = normals[vertex];
        const FourDirections four(normalized(fourPoints(_mm_loadu_ps(first), _mm_loadu_ps(first + 3),
                                                        _mm_loadu_ps(first + 6), _mm_loadu_ps(first + 9)),
                                             true));
        for (std::size_t i = 0; i < 4; ++i)
            storeThree(first + 3 * i, four.each[i]);
    }
    return vertex;
}

#else

quint64 addTriangles(const Positions&, const quint32*, quint64, const Normals&) {
    return 0;
}

quint32 normalizeAll(const Normals&) {
    return 0;
}

#endif

} // namespace

void generateVertexNormals(const float* positions, quint64 positionFloats, const quint32* indices,
                           quint64 indexCount, quint32 vertexCount, float* normals, const WorkMeter& meter) {
    const Positions points{positions, positionFloats};
    const Normals all(normals, vertexCount);
    const quint64 triangles = indexCount / 3;
    constexpr quint64 kTrianglesPerReport = 1 << 15; // about a millisecond
    for (quint64 first = 0; first < triangles; first += kTrianglesPerReport) {
        const quint64 count = std::min(kTrianglesPerReport, triangles - first);
        const quint32* const corners = indices + first * 3;
        for (quint64 i = addTriangles(points, corners, count, all); i < count; ++i)
            addTriangle(points, corners + i * 3, all);
        if (meter)
            meter(static_cast<int>(count));
    }
    for (quint32 vertex = normalizeAll(all); vertex < vertexCount; ++vertex)
        normalizeOne(all[vertex]);
}

} // namespace Atelier::Vel
