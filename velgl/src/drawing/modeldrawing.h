#pragma once

#include "drawing/modeldrawable.h"

namespace Atelier::Vel {

/// Draws one drawable with the current program; leaves all bindings as they were.
void drawDrawable(ModelDrawable& drawable);

} // namespace Atelier::Vel
