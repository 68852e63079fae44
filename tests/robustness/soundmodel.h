#pragma once

#include <velgl/gpumodel.h>

#include "support/recordingcontext.h"

namespace Atelier::Vel::Testing {

/// The error in a model that was uploaded into `recording`: indices without a vertex, commands beyond the
/// index buffer, or buffers of another length than they report. Null for a valid model.
QString unsoundness(const GPUModel& model, const Recording& recording);

} // namespace Atelier::Vel::Testing
