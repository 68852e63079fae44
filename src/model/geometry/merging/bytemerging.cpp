#include "geometry/merging/bytemerging.h"

#include <algorithm>

#include "geometry/merging/cornerkeys.h"
#include "geometry/merging/duplicatefilter.h"
#include "geometry/merging/vertextable.h"

namespace Atelier::Vel {

namespace {

/// The attributes for the given corners only, in their order. `numbers` receives the index lists.
std::vector<CornerAttribute> attributesOf(const std::vector<CornerAttribute>& attributes,
                                          const std::vector<quint32>& corners,
                                          std::vector<quint32>& numbers) {
    std::vector<CornerAttribute> result = attributes;
    numbers.resize(attributes.size() * corners.size());
    for (std::size_t i = 0; i < result.size(); ++i) {
        quint32* const list = numbers.data() + i * corners.size();
        std::transform(corners.begin(), corners.end(), list,
                       [&](quint32 corner) { return static_cast<quint32>(attributes[i].valueOf(corner)); });
        result[i].indices = list;
        result[i].indexCount = corners.size();
        result[i].indexStep = 1;
    }
    return result;
}

/// Merges the candidates among the corners of `remap` as in `merged`. Every other corner becomes a vertex.
void spreadToAllCorners(const std::vector<quint32>& candidates, const VertexRemap& merged,
                        VertexRemap& remap) {
    const auto count = static_cast<quint32>(candidates.size());
    const quint32* const groups = merged.vertexOfCorner();
    const quint32* const firstOfGroup = merged.firstCorner();
    quint32* const vertexOfCorner = remap.vertexOfCorner();
    quint32* const firstCorner = remap.makeFirstCorner();
    std::vector<quint32> vertexOfGroup(merged.vertexCount());
    quint32 vertices = 0;
    quint32 candidate = 0;
    for (quint32 corner = 0; corner < remap.cornerCount(); ++corner) {
        const bool isCandidate = candidate < count && candidates[candidate] == corner;
        if (isCandidate && firstOfGroup[groups[candidate]] != candidate) {
            vertexOfCorner[corner] = vertexOfGroup[groups[candidate++]];
            continue;
        }
        if (isCandidate)
            vertexOfGroup[groups[candidate++]] = vertices;
        firstCorner[vertices] = corner;
        vertexOfCorner[corner] = vertices++;
    }
    remap.setVertexCount(vertices);
}

} // namespace

void mergeByBytes(const std::vector<CornerAttribute>& attributes, const MergeOptions& options,
                  VertexRemap& remap) {
    const CornerKeys keys(attributes, options.hashSeed);
    VertexTable table(remap.cornerCount(), keys.words());
    remap.setVertexCount(table.insertAll(keys, remap.cornerCount(), remap.vertexOfCorner(),
                                         remap.makeFirstCorner(), options.meter));
}

void mergeMostlyDistinct(const std::vector<CornerAttribute>& attributes, const MergeOptions& options,
                         VertexRemap& remap) {
    const std::size_t key = largestAttribute(attributes);
    if (attributes.empty() || !options.policy.canFilter(attributes[key], remap.cornerCount()))
        return mergeByBytes(attributes, options, remap);
    const std::vector<quint32> candidates = duplicateCandidates(
        attributes[key], remap.cornerCount(), options.hashSeed, remap.vertexOfCorner(), options.meter);
    const auto count = static_cast<quint32>(candidates.size());
    if (!options.policy.areFewCandidates(count, remap.cornerCount()))
        return mergeByBytes(attributes, options, remap);

    std::vector<quint32> numbers;
    std::vector<quint32> groupOfCandidate(count);
    VertexRemap merged(count, groupOfCandidate.data());
    mergeByBytes(attributesOf(attributes, candidates, numbers), {options.hashSeed, {}, options.policy},
                 merged);
    if (merged.vertexCount() != count)
        spreadToAllCorners(candidates, merged, remap);
}

} // namespace Atelier::Vel
