#pragma once

#include <velgl/drawfilter.h>

namespace Atelier::Vel {
class GPUModel;
class ModelFiles;
} // namespace Atelier::Vel

namespace Atelier::Vel::Tool {

/// The commands that each pass of a picture draws. A fragment belongs to one pass; a command whose texture
/// has opaque and transparent texels is drawn in both. By default both passes draw everything, which gives
/// the same picture.
struct SurfacePasses {
    DrawFilter opaque;
    DrawFilter transparent;
};

/// Divides the commands by the opacity of their materials. Textures are those that a loader reads from
/// `files`; only their headers are read. A command whose opacity is not known is drawn in both passes, and
/// one that is invisible in none. Only commands that pass `shown` are drawn.
SurfacePasses surfacePasses(const GPUModel& model, const ModelFiles& files, const DrawFilter& shown = {});

} // namespace Atelier::Vel::Tool
