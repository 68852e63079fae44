#pragma once

#include <memory>
#include <vector>

#include <QtCore/QString>

#include <velgl/drawbuffers.h>
#include <velgl/instancedatacollection.h>

#include "drawing/commandnames.h"
#include "drawing/modeltextures.h"

namespace Atelier::Vel {

/// Consecutive commands whose materials have the same textures.
struct TextureRun {
    int first = 0;
    int count = 0;
    std::vector<ModelTexture> textures; ///< by texture unit
};

/// One drawable of a model with all that belongs to it.
struct ModelDrawable {
    std::unique_ptr<DrawBuffers> buffers;
    std::unique_ptr<InstanceDataCollection> materials;
    std::unique_ptr<InstanceDataCollection> instances;
    quint64 key = 0;
    CommandNames materialNames;
    CommandNames objectNames;
    std::vector<TextureRun> runs; ///< as of the last draw
    const InstanceDataPlan* runsPlan = nullptr;
};

using ModelDrawables = std::vector<std::unique_ptr<ModelDrawable>>;

} // namespace Atelier::Vel
