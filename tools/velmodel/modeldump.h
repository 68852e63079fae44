#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace Atelier::Vel {
class GPUModel;
}

namespace Atelier::Vel::Tool {

struct DumpOptions {
    bool includeData = true; ///< the base64 fields
};

/// Everything that a model has on the GPU, read back from it. docs/velmodel.md describes the format.
QJsonObject dumpModel(const GPUModel& model, const DumpOptions& options);

/// The number of bytes that the base64 fields of a dump encode.
quint64 dumpedByteCount(const GPUModel& model);

} // namespace Atelier::Vel::Tool
