#pragma once

#include <velmodel/drawdata.h>
#include <velmodel/loadoptions.h>
#include <velmodel/loadreport.h>

namespace Atelier::Vel {

class RecordObserver;

/// What readDrawDataFromOBJFile() does, while `observer` sees the records. An exception of the observer ends
/// the load.
DrawData readObservedDrawData(const QString& path, QString& error, const LoadProgress& progress,
                              LoadReport& report, const LoadOptions& options, RecordObserver& observer);

} // namespace Atelier::Vel
