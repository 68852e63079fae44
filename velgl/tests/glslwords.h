#pragma once

#include <QtCore/QStringList>

namespace Atelier::Vel::Testing {

/// Returns: all keywords and reserved words of GLSL 4.60, put together by the rules of their names.
inline QStringList glslWords() {
    QStringList words =
        QStringLiteral("const uniform buffer shared attribute varying coherent volatile restrict readonly "
                       "writeonly atomic_uint layout centroid flat smooth noperspective patch sample "
                       "invariant precise break continue do for while switch case default if else "
                       "subroutine in out inout int void bool true false float double discard return uint "
                       "lowp mediump highp precision struct "
                       "common partition active asm class union enum typedef template this resource goto "
                       "inline noinline public static extern external interface long short half fixed "
                       "unsigned superp input output filter sizeof cast namespace using sampler3DRect")
            .split(QLatin1Char(' '));
    for (const char* count : {"2", "3", "4"}) {
        for (const char* vector : {"vec", "ivec", "bvec", "uvec", "dvec", "hvec", "fvec"})
            words << QLatin1String(vector) + QLatin1String(count);
        for (const char* matrix : {"mat", "dmat"}) {
            words << QLatin1String(matrix) + QLatin1String(count);
            for (const char* rows : {"x2", "x3", "x4"})
                words << QLatin1String(matrix) + QLatin1String(count) + QLatin1String(rows);
        }
    }
    for (const char* kind : {"sampler", "isampler", "usampler", "image", "iimage", "uimage"})
        for (const char* shape : {"1D", "1DArray", "2D", "2DArray", "2DRect", "2DMS", "2DMSArray", "3D",
                                  "Cube", "CubeArray", "Buffer"})
            words << QLatin1String(kind) + QLatin1String(shape);
    for (const char* shape : {"1D", "1DArray", "2D", "2DArray", "2DRect", "Cube", "CubeArray"})
        words << QStringLiteral("sampler") + QLatin1String(shape) + QStringLiteral("Shadow");
    return words;
}

} // namespace Atelier::Vel::Testing
