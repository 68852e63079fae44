#pragma once

#include "drawing/modeldrawable.h"

namespace Atelier::Vel {

/// Draws one drawable with the current program and restores all bindings, also when it throws what a client's
/// function throws. Draws nothing without a context.
void drawDrawable(ModelDrawable& drawable, ModelTextures& textures);

} // namespace Atelier::Vel
