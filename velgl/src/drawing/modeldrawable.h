#pragma once

#include <memory>
#include <vector>

#include <QtCore/QHash>
#include <QtCore/QString>

#include <velgl/drawbuffers.h>
#include <velgl/instancedatacollection.h>

#include "drawing/commandnames.h"
#include "drawing/drawableboxes.h"
#include "drawing/orderedcommands.h"
#include "drawing/placedbounds.h"
#include "drawing/texturesets.h"

namespace Atelier::Vel {

/// What the current draw needs of a drawable, as GL names.
struct PreparedDrawable {
    bool isDrawn = false;
    unsigned int commands = 0;
    OrderedRuns ordered;
    unsigned int materials = 0; ///< 0 for what the client has bound
    unsigned int instances = 0;
};

/// One drawable of a model with all that belongs to it.
struct ModelDrawable {
    std::unique_ptr<DrawBuffers> buffers;
    std::unique_ptr<InstanceDataCollection> materials;
    std::unique_ptr<InstanceDataCollection> instances;
    quint64 key = 0;
    CommandNames materialNames;
    CommandNames objectNames;
    TextureSets textures;
    OrderedCommands ordered;
    PreparedDrawable prepared;
    QHash<QString, DrawableBoxes> boxes; ///< by attribute
    GivenBoxes givenBoxes;
};

/// By number; null for a drawable that was removed.
using ModelDrawables = std::vector<std::unique_ptr<ModelDrawable>>;

} // namespace Atelier::Vel
