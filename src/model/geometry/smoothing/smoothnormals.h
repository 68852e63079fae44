#pragma once

#include <QtCore/QtGlobal>

#include "geometry/merging/mergeoptions.h"
#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// Triangles over numbered vertices.
struct TriangleList {
    const float* positions; ///< three per vertex; positions beyond the end are zero
    quint64 positionFloats;
    const quint32* indices; ///< three per triangle
    quint64 indexCount;
    quint32 vertexCount;
};

/// The same as generateVertexNormals(), except that vertices whose positions have the same bytes count as one
/// vertex. They get the same normal. So normals do not change at a seam of the other attributes.
/// `merging.meter` counts vertices, and `meter` counts triangles.
/// Cost: that of merging the positions by their bytes and that of generateVertexNormals(); working memory of
/// 4 bytes per index and at most 20 bytes per vertex.
void generateSmoothNormals(const TriangleList& triangles, float* normals, const MergeOptions& merging,
                           const WorkMeter& meter = {});

} // namespace Atelier::Vel
