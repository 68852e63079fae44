#pragma once

#include <QtCore/QtGlobal>

#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// Writes one smooth normal per vertex to `normals`: three floats each, `vertexCount` vertices. `positions`
/// holds `positionFloats` floats, three per vertex; positions beyond its end are zero. Three entries of
/// `indices` make a triangle; vertex numbers from `vertexCount` on get no normal. The weight of a triangle is
/// the sine of its angle at its first vertex. The normal of a vertex without triangles is zero. `meter`
/// counts triangles. Normals point to the side from which a triangle is seen clockwise. This is intentional.
void generateVertexNormals(const float* positions, quint64 positionFloats, const quint32* indices,
                           quint64 indexCount, quint32 vertexCount, float* normals,
                           const WorkMeter& meter = {});

} // namespace Atelier::Vel
