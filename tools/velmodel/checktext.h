#pragma once

#include <QtCore/QString>

#include <velmodel/modelcheck.h>

namespace Atelier::Vel::Tool {

enum class Colours { Off, On };

/// The findings of a file for people: grouped by severity, the worst first.
QString checkText(const QString& file, const ModelCheck& check, Colours colours);

} // namespace Atelier::Vel::Tool
