#pragma once

#include <QtCore/QString>

#include <velgl/gpumodel.h>

namespace Atelier::Vel::Testing {

/// Loads a model record by record, one builder call after the other. The library has to agree with it.
GPUModel* literalLoadModel(const QString& path, QString& error);

} // namespace Atelier::Vel::Testing
