#pragma once

#include <memory>
#include <vector>

#include <QtCore/QString>

#include <velgl/drawbuffers.h>
#include <velgl/instancedatacollection.h>

#include "drawing/commandnames.h"

namespace Atelier::Vel {

class Texture;

/// Where the texture of a material comes from: an object or a path; neither if the material has no texture.
struct TextureSource {
    QString path;
    Texture* object = nullptr;

    friend bool operator==(const TextureSource& a, const TextureSource& b) {
        return a.object == b.object && a.path == b.path;
    }
};

/// Consecutive commands whose materials have the same textures.
struct TextureRun {
    int first = 0;
    int count = 0;
    std::vector<TextureSource> textures; ///< by texture unit
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
