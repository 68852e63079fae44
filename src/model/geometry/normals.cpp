#include "geometry/normals.h"

#include <algorithm>

#include <QtGui/QVector3D>

namespace Atelier::Vel {

namespace {

QVector3D positionOf(const float* positions, quint64 positionFloats, quint32 vertex) {
    QVector3D position;
    for (int axis = 0; axis < 3; ++axis)
        if (quint64{vertex} * 3 + static_cast<quint64>(axis) < positionFloats)
            position[axis] = positions[quint64{vertex} * 3 + static_cast<quint64>(axis)];
    return position;
}

} // namespace

void generateVertexNormals(const float* positions, quint64 positionFloats, const quint32* indices,
                           quint64 indexCount, quint32 vertexCount, float* normals) {
    std::fill_n(normals, quint64{vertexCount} * 3, 0.0F);
    for (quint64 i = 0; i + 2 < indexCount; i += 3) {
        const QVector3D a = positionOf(positions, positionFloats, indices[i]);
        const QVector3D b = positionOf(positions, positionFloats, indices[i + 1]);
        const QVector3D c = positionOf(positions, positionFloats, indices[i + 2]);
        const QVector3D normal = QVector3D::crossProduct((c - a).normalized(), (b - a).normalized());
        for (quint64 corner = i; corner < i + 3; ++corner)
            if (indices[corner] < vertexCount)
                for (int axis = 0; axis < 3; ++axis)
                    normals[quint64{indices[corner]} * 3 + static_cast<quint64>(axis)] += normal[axis];
    }
    for (quint32 vertex = 0; vertex < vertexCount; ++vertex) {
        float* const normal = normals + quint64{vertex} * 3;
        QVector3D unit(normal[0], normal[1], normal[2]);
        unit.normalize();
        std::copy_n(&unit[0], 3, normal);
    }
}

} // namespace Atelier::Vel
