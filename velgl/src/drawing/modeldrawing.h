#pragma once

#include "drawing/modeldrawable.h"

namespace Atelier::Vel {

/// Draws one drawable with the current program and restores all bindings. Draws nothing without a context.
void drawDrawable(ModelDrawable& drawable);

} // namespace Atelier::Vel
