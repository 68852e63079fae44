#include "mesh/mesh.h"

#include <utility>

#include "mesh/mergedcorners.h"

namespace Atelier::Vel {

Mesh::Mesh(Input input, QSharedPointer<ModelDataStreamAllocator> allocator)
    : streams(std::move(allocator)),
      groups(streams, input),
      faces(streams, input),
      attributes(streams, input) {}

void Mesh::clear() {
    groups.clear();
    faces.clear();
    attributes.clear();
    normalsAttribute.clear();
    generatedNormals = {};
    streams.forgetRefused();
}

bool Mesh::isComplete() const {
    return !groups.isEmpty() && !faces.isEmpty() && !attributes.isEmpty() && attributes.isComplete();
}

quint32 Mesh::cornerCount() const {
    const MergedCorners* const merged = attributes.mergedCorners();
    return merged != nullptr ? static_cast<quint32>(merged->list()->size()) : faces.cornerCount();
}

} // namespace Atelier::Vel
