#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velmodel/loadreport.h>

namespace Atelier::Vel::Tool {

/// What a load repaired, for people: one sentence for each repair, or one for each kind if there are more
/// than ten.
QStringList repairLines(const LoadReport& report);

/// Prints the same repairs on standard error, each behind its place.
void reportRepairs(const LoadReport& report);

} // namespace Atelier::Vel::Tool
