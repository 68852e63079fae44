#pragma once

#include <QtCore/QString>

#include "renderer.h"

namespace Atelier::Vel::Tool {

/// Advice on pictures in which the model is nearly black, found by trial in small pictures, and on models
/// whose materials are all black.
/// Requires: `scene` is that of a picture that is dark, if there is one; `brightness` is that of all
/// pictures. Returns: a sentence that names the first option that makes the model bright enough; null if none
/// is needed or helps.
QString darknessAdvice(Renderer& renderer, GPUModel& model, const Scene& scene, const Brightness& brightness);

} // namespace Atelier::Vel::Tool
