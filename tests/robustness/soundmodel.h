#pragma once

#include <velgl/gpumodel.h>

#include "support/recordingcontext.h"

namespace Atelier::Vel::Testing {

/// What is wrong with a model that was uploaded into `recording`: indices that name no vertex, commands
/// beyond the index buffer, buffers that are not as long as they say. Null when all is well.
QString unsoundness(const GPUModel& model, const Recording& recording);

} // namespace Atelier::Vel::Testing
