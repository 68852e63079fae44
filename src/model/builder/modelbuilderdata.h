#pragma once

#include <utility>

#include <velmodel/modelbuilder.h>

#include "drawdata/preparation.h"
#include "mesh/mesh.h"

namespace Atelier::Vel {

/// The input of a builder, and the draw data that it makes from it.
struct VELMODEL_NO_EXPORT ModelBuilder::Data {
    Data(const ModelBuilder* owner, QSharedPointer<ModelDataStreamAllocator> allocator,
         quint64 materialFlagsMask, Input input = Input::Kept)
        : mesh(input, std::move(allocator)), preparation(mesh, materialFlagsMask, owner) {}

    Mesh mesh;
    Preparation preparation;
};

} // namespace Atelier::Vel
