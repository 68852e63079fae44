#include "literal/literalbuilder.h"

#include <numeric>

#include <QtCore/QHash>
#include <QtGui/QVector3D>

namespace Atelier::Vel::Literal {

namespace {

/// The value numbers of a corner. All invalid ones stand for the same value.
QVector<quint32> tupleOf(const Mesh& mesh, quint32 corner) {
    QVector<quint32> tuple;
    for (const Attribute& attribute : mesh.attributes) {
        const auto valueCount = static_cast<quint32>(attribute.values.size() / attribute.stride());
        const quint32 index =
            corner < attribute.indices.size() ? attribute.indices[corner] : quint32{0xFFFFFFFF};
        tuple.append(qMin(index, valueCount));
    }
    return tuple;
}

} // namespace

QByteArray Attribute::valueOf(std::size_t corner) const {
    const qint64 valueCount = values.size() / stride();
    if (corner >= indices.size() || indices[corner] >= valueCount)
        return QByteArray(stride(), '\0');
    return values.mid(static_cast<int>(indices[corner]) * stride(), stride());
}

void buildGPUFriendlyStreams(Mesh& mesh, bool mergeCorners) {
    const quint32 cornerCount =
        std::accumulate(mesh.verticesPerFace.begin(), mesh.verticesPerFace.end(), quint32{0});
    std::vector<quint32> firstCorner;
    mesh.gpuIndices.clear();
    QHash<QVector<quint32>, quint32> table;
    for (quint32 corner = 0; corner < cornerCount; ++corner) {
        quint32 vertex = static_cast<quint32>(firstCorner.size());
        if (mergeCorners) {
            const QVector<quint32> tuple = tupleOf(mesh, corner);
            vertex = table.value(tuple, vertex);
            table.insert(tuple, vertex);
        }
        mesh.gpuIndices.push_back(vertex);
        if (vertex == firstCorner.size())
            firstCorner.push_back(corner);
    }
    for (Attribute& attribute : mesh.attributes) {
        attribute.gpuValues.clear();
        for (const quint32 corner : firstCorner)
            attribute.gpuValues.append(attribute.valueOf(corner));
    }
    optimizeGPUStreams(mesh);
}

void optimizeGPUStreams(Mesh& mesh) {
    for (const Attribute& attribute : mesh.attributes)
        mesh.vertexCount = attribute.gpuValues.size() / attribute.stride();
    QHash<QByteArray, quint32> table;
    std::vector<quint32> oldToNew;
    std::vector<int> newToOld;
    for (int vertex = 0; vertex < mesh.vertexCount; ++vertex) {
        QByteArray key;
        for (const Attribute& attribute : mesh.attributes)
            key.append(attribute.gpuValues.mid(vertex * attribute.stride(), attribute.stride()));
        const auto next = static_cast<quint32>(newToOld.size());
        const quint32 number = table.value(key, next);
        if (number == next) {
            table.insert(key, next);
            newToOld.push_back(vertex);
        }
        oldToNew.push_back(number);
    }
    mesh.newVertexCount = static_cast<int>(newToOld.size());
    for (quint32& index : mesh.gpuIndices)
        index = oldToNew[index];
    for (Attribute& attribute : mesh.attributes) {
        QByteArray kept;
        for (const int vertex : newToOld)
            kept.append(attribute.gpuValues.mid(vertex * attribute.stride(), attribute.stride()));
        attribute.gpuValues = kept;
    }
}

std::vector<float> vertexNormals(const std::vector<float>& positions, const std::vector<quint32>& triangles) {
    std::vector<QVector3D> normals(positions.size() / 3);
    const auto position = [&](std::size_t vertex) {
        return QVector3D(positions[vertex * 3], positions[vertex * 3 + 1], positions[vertex * 3 + 2]);
    };
    for (std::size_t i = 0; i < triangles.size(); i += 3) {
        const quint32 a = triangles[i];
        const quint32 b = triangles[i + 1];
        const quint32 c = triangles[i + 2];
        const QVector3D faceNormal = QVector3D::crossProduct((position(c) - position(a)).normalized(),
                                                             (position(b) - position(a)).normalized());
        normals[a] += faceNormal;
        normals[b] += faceNormal;
        normals[c] += faceNormal;
    }
    std::vector<float> result;
    for (QVector3D& normal : normals) {
        normal.normalize();
        result.insert(result.end(), {normal.x(), normal.y(), normal.z()});
    }
    return result;
}

} // namespace Atelier::Vel::Literal
