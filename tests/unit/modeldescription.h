#pragma once

#include <QtCore/QStringList>

#include <velgl/gpumodel.h>

namespace Atelier::Vel::Testing {

/// Everything that a model holds besides the contents of its buffers, one fact per line.
QStringList describe(const GPUModel& model);

} // namespace Atelier::Vel::Testing
