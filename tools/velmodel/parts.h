#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velgl/drawfilter.h>

namespace Atelier::Vel {
class GPUModel;
}

namespace Atelier::Vel::Tool {

/// The commands of some parts of a model that was loaded with LoadOptions::splitObjects. A part "o/g" is
/// named by "o/g" or by "o" alone.
/// Returns: a filter that passes all commands if no names are given. If there is a name that no part has,
/// `error` becomes a sentence with the names that there are.
DrawFilter partFilter(const GPUModel& model, const QStringList& names, QString& error);

} // namespace Atelier::Vel::Tool
