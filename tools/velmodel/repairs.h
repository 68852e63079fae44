#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velmodel/loadreport.h>

namespace Atelier::Vel::Tool {

/// What a load repaired, for people: one line for each repair, or one for each kind if there are more than
/// ten.
QStringList repairLines(const LoadReport& report);

/// Prints these lines on standard error, each behind the path of the model.
void reportRepairs(const QString& path, const LoadReport& report);

} // namespace Atelier::Vel::Tool
