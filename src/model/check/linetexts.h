#pragma once

#include <velmodel/modelsource.h>

#include "check/findinglog.h"

namespace Atelier::Vel {

/// Completes all findings that have a line: adds the text of the line, and replaces columns that stand for
/// words. Reads each file up to the last line that is needed.
void completeFindings(FindingLog& log, ModelSource& source);

} // namespace Atelier::Vel
