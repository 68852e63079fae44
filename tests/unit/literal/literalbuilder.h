#pragma once

#include <vector>

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVector>

/// The way from separately indexed attributes to unique vertices and normals, step by step as it is defined:
/// one vertex per corner first, a byte array as the key of each. What the library is compared with; nothing
/// here is shared with it.
namespace Atelier::Vel::Literal {

struct Attribute {
    int elementSize = 4;
    int components = 3;
    QByteArray values;
    std::vector<quint32> indices;

    QByteArray gpuValues;

    int stride() const { return elementSize * components; }
    /// The bytes of the value of a corner; zeros when it has no valid index.
    QByteArray valueOf(std::size_t corner) const;
};

struct Mesh {
    QMap<QString, Attribute> attributes;
    std::vector<quint32> verticesPerFace;

    std::vector<quint32> gpuIndices;
    int vertexCount = 0;    ///< before merging
    int newVertexCount = 0; ///< after merging
};

void buildGPUFriendlyStreams(Mesh& mesh, bool mergeCorners);
void optimizeGPUStreams(Mesh& mesh);

/// Three floats per vertex.
std::vector<float> vertexNormals(const std::vector<float>& positions, const std::vector<quint32>& triangles);

} // namespace Atelier::Vel::Literal
