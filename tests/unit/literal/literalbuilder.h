#pragma once

#include <vector>

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVector>

/// Makes unique vertices and normals from separately indexed attributes, step by step as defined: first one
/// vertex per corner, with a byte array as its key. The reference for the library; shares no code with it.
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
