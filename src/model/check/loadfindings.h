#pragma once

#include <velmodel/loadreport.h>

#include "check/findinglog.h"

namespace Atelier::Vel {

/// Adds what a load has observed, except what the examination finds itself, and in more detail.
void addLoadFindings(const LoadReport& report, FindingLog& log);

} // namespace Atelier::Vel
