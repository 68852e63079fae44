#pragma once

#include <velgl/drawoptions.h>

#include "drawing/modeldrawable.h"

namespace Atelier::Vel {

/// Draws drawables in order. What may throw or call a client's functions comes first, with the client's
/// state; after that OpenGL is called without a look-up, a query or an allocation, unless something is drawn
/// first. Requires: `gl` is the current context.
void drawModel(const ContextGL& gl, ModelDrawables& drawables, ModelTextures& textures,
               const DrawOptions& options);

} // namespace Atelier::Vel
