#pragma once

#include <QtCore/QStringList>

#include "exitcode.h"

namespace Atelier::Vel::Tool {

/// Each command reads the arguments after its name, does its work, and has reported every error when it
/// returns.
ExitCode runInfo(const QStringList& arguments);
ExitCode runDump(const QStringList& arguments);
ExitCode runRender(const QStringList& arguments);

} // namespace Atelier::Vel::Tool
