#include "import/indexfaults.h"

#include <algorithm>

#include "import/attributenames.h"
#include "mesh/mergedcorners.h"
#include "mesh/mesh.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

namespace {

quint32 valueCount(Mesh& mesh, const QString& attribute) {
    const VertexAttribute record = mesh.attributes.records().value(attribute);
    return static_cast<quint32>(std::min<quint64>(record.valueCount(kValues), kNoIndex));
}

// Whether one of the numbers does not exist. A corner need not have one.
bool hasFault(const quint32* numbers, quint64 count, quint32 limit) {
    return std::any_of(numbers, numbers + count,
                       [limit](quint32 number) { return number >= limit && number != kNoIndex; });
}

bool hasFault(Mesh& mesh, const QString& attribute) {
    const quint32 limit = valueCount(mesh, attribute);
    if (!mesh.attributes.contains(attribute) ||
        mesh.attributes.areIndicesBelow(attribute, mesh.cornerCount(), limit))
        return false;
    const MergedCorners* const merged = mesh.attributes.mergedCorners();
    if (merged == nullptr) {
        const WordView list =
            WordView::of(mesh.attributes.records().value(attribute).streams[kIndices].data());
        return hasFault(list.words, list.count, limit);
    }
    bool found = false;
    merged->unmerge(merged->attributes().indexOf(attribute), [&](const quint32* numbers, quint64 count) {
        found = found || hasFault(numbers, count, limit);
    });
    return found;
}

} // namespace

IndexFaults findIndexFaults(Mesh& mesh) {
    const QString position = positionAttribute();
    const bool arePlaced =
        mesh.faces.isEmpty() ||
        (mesh.attributes.contains(position) &&
         mesh.attributes.areIndicesBelow(position, mesh.cornerCount(), valueCount(mesh, position)));
    return {!arePlaced, hasFault(mesh, normalAttribute()), hasFault(mesh, texCoordAttribute())};
}

} // namespace Atelier::Vel
