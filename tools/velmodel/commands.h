#pragma once

#include <QtCore/QStringList>

#include "exitcode.h"

namespace Atelier::Vel::Tool {

/// Each command parses the arguments that follow its name and does its work. It reports every error before it
/// returns.
ExitCode runInfo(const QStringList& arguments);
ExitCode runDump(const QStringList& arguments);
ExitCode runRender(const QStringList& arguments);
ExitCode runCheck(const QStringList& arguments);

} // namespace Atelier::Vel::Tool
