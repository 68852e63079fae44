#pragma once

#include <QtCore/QCommandLineParser>

#include <velmodel/objloader.h>

namespace Atelier::Vel::Tool {

/// How the commands load models.
struct LoadFlags {
    LoadOptions options;
    bool isOptimised = false; ///< whether triangles and vertices are reordered
};

/// Declares the options of the commands that load models. --optimise is only there if this build can do it.
void addLoadFlags(QCommandLineParser& parser);

/// Reads them.
LoadFlags readLoadFlags(const QCommandLineParser& parser);

} // namespace Atelier::Vel::Tool
