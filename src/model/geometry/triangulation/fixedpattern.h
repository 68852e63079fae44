#pragma once

namespace Atelier::Vel {

/// The triangles of a triangle or quadrilateral. A quadrilateral is always split from corner 1 to corner 3,
/// even if it is concave. This is intentional.
inline constexpr int kTrianglePattern[2][3] = {{0, 1, 2}, {0, 2, 1}};
inline constexpr int kQuadrilateralPattern[2][6] = {{0, 1, 3, 1, 2, 3}, {0, 3, 1, 1, 3, 2}};

inline const int* fixedPattern(int count, bool clockwise) {
    return count == 3 ? kTrianglePattern[clockwise] : kQuadrilateralPattern[clockwise];
}

inline unsigned int* writeTriangle(int a, int b, int c, unsigned int* out) {
    out[0] = static_cast<unsigned int>(a);
    out[1] = static_cast<unsigned int>(b);
    out[2] = static_cast<unsigned int>(c);
    return out + 3;
}

inline unsigned int* writeFixedPattern(int count, bool clockwise, const int* corners, unsigned int* out) {
    const int* pattern = fixedPattern(count, clockwise);
    out = writeTriangle(corners[pattern[0]], corners[pattern[1]], corners[pattern[2]], out);
    return count == 3 ? out
                      : writeTriangle(corners[pattern[3]], corners[pattern[4]], corners[pattern[5]], out);
}

} // namespace Atelier::Vel
