#include "import/missingnormals.h"

#include <algorithm>
#include <vector>

#include <QtCore/QRandomGenerator>

#include "geometry/smoothing/cornernormals.h"
#include "glconstants.h"
#include "import/attributenames.h"
#include "import/smoothinggroups.h"
#include "mesh/mesh.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

namespace {

using Kind = NormalOptions::Kind;

/// Whether normals are made for corners before these are merged, and not for vertices.
bool areOfCorners(const NormalOptions& options) {
    return options.kind == Kind::Crease || options.kind == Kind::SmoothingGroups;
}

quint32 normalCount(Mesh& mesh) {
    return static_cast<quint32>(mesh.attributes[normalAttribute()].valueCount(kValues));
}

/// Marks the numbers from `limit` on: those of corners that get a normal by kNoIndex, and those of corners
/// that get zeros by a number that no later normal has.
/// Returns: the number of corners that get a normal.
quint64 markMissing(const WordView& numbers, quint32 limit, const LoadRepairs& repairs) {
    constexpr quint32 kZeros = 0xFFFFFFFF;
    quint64 missing = 0;
    for (quint64 corner = 0; corner < numbers.count; ++corner) {
        quint32& number = numbers.words[corner];
        if (number < limit)
            continue;
        number = number == kNoIndex || repairs.generateMissingNormals ? kNoIndex : kZeros;
        missing += number == kNoIndex ? 1 : 0;
    }
    return missing;
}

void addNormals(Mesh& mesh, quint64 floats, const void* normals) {
    mesh.attributes.addValues(normalAttribute(), floats, normals, kGlFloat);
}

/// The missing normals become one value that the preparation replaces.
void markForGeneration(Mesh& mesh, const WordView& numbers, const NormalOptions& options) {
    const quint32 mark = normalCount(mesh);
    std::replace(numbers.words, numbers.words + numbers.count, kNoIndex, mark);
    const quint32 normal[] = {kMissingNormal, kMissingNormal, kMissingNormal};
    addNormals(mesh, 3, normal);
    mesh.normalsAttribute = normalAttribute();
    mesh.generatedNormals = {true, options.kind == Kind::Defined || options.outward, true};
}

CornerFaces facesOf(Mesh& mesh) {
    VertexAttribute& position = mesh.attributes[positionAttribute()];
    const WordView indices = WordView::of(position.streams[kIndices].data());
    CornerFaces faces;
    faces.positions.values = ByteView::of(position.streams[kValues].data()).bytes;
    faces.positions.stride = 3 * sizeof(float);
    faces.positions.valueCount = position.valueCount(kValues);
    faces.positions.indices = indices.words;
    faces.positions.indexCount = indices.count;
    faces.cornerCount = mesh.cornerCount();
    faces.uniformCorners = mesh.faces.uniform().corners;
    faces.faceCount = mesh.faces.uniform().count;
    if (faces.uniformCorners == 0) {
        const WordView counts = WordView::of(mesh.faces.listed().data());
        faces.cornerCounts = counts.words;
        faces.faceCount = counts.count;
    }
    return faces;
}

void addCornerNormals(Mesh& mesh, const WordView& numbers, const NormalOptions& options,
                      const SmoothingGroups& groups, ProgressMeter& meter) {
    CornerFaces faces = facesOf(mesh);
    std::vector<quint32> groupOfFace;
    if (options.kind == Kind::SmoothingGroups) {
        groupOfFace = groups.ofFaces(faces.faceCount);
        faces.groups = groupOfFace.data();
    }
    // See makeCornerNormals().
    constexpr qint64 kCountsPerCorner = 4;
    const qint64 work = kCountsPerCorner * faces.cornerCount;
    meter.begin(LoadPhase::MakingNormals, work);
    const CornerNormals made = makeCornerNormals(
        faces, {options.creaseAngle, options.outward}, {numbers.words, kNoIndex, normalCount(mesh)},
        {QRandomGenerator::system()->generate64(), meter.meter(work), {}});
    addNormals(mesh, made.normals.size(), made.normals.data());
}

} // namespace

bool completesNormals(const LoadOptions& options) {
    return options.repairs.generateMissingNormals || options.normals.kind != Kind::Defined;
}

quint64 completeNormals(Mesh& mesh, const LoadOptions& options, const SmoothingGroups& groups,
                        ProgressMeter& meter) {
    const bool hasNormals = mesh.attributes.contains(normalAttribute());
    if (!hasNormals && !areOfCorners(options.normals)) {
        mesh.generatedNormals = {options.normals.kind == Kind::Smooth, options.normals.outward, false};
        return 0;
    }
    if (!completesNormals(options) || !mesh.attributes.contains(positionAttribute()) || mesh.faces.isEmpty())
        return 0;
    if (!hasNormals) {
        mesh.attributes.create(normalAttribute(), 3, kGlFloat, 0, 0);
        mesh.normalsAttribute.clear();
    }
    const quint32 corners = mesh.cornerCount();
    const quint32 count = normalCount(mesh);
    if (mesh.attributes.areIndicesBelow(normalAttribute(), corners, count))
        return 0;
    const WordView numbers = mesh.attributes.listCorners(normalAttribute(), corners);
    const quint64 missing = markMissing(numbers, count, options.repairs);
    if (missing != 0 && areOfCorners(options.normals))
        addCornerNormals(mesh, numbers, options.normals, groups, meter);
    else if (missing != 0)
        markForGeneration(mesh, numbers, options.normals);
    return hasNormals ? missing : 0;
}

} // namespace Atelier::Vel
