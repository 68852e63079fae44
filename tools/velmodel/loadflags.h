#pragma once

#include <QtCore/QCommandLineParser>

#include <velmodel/objloader.h>

namespace Atelier::Vel::Tool {

/// Declares the options of the commands that load models.
void addLoadOptions(QCommandLineParser& parser);

/// Reads them.
LoadOptions readLoadOptions(const QCommandLineParser& parser);

} // namespace Atelier::Vel::Tool
