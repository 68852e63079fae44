#pragma once

#include <QtCore/QCommandLineParser>

#include <velmodel/objloader.h>

namespace Atelier::Vel::Tool {

/// The options of all commands that load models.
struct LoadFlags {
    LoadOptions options;
    bool isOptimised = false; ///< whether triangles and vertices are reordered
};

/// Declares the options. --optimise is declared only if this build can optimise.
void addLoadFlags(QCommandLineParser& parser);

/// Declares --confined alone, for commands that have no use for the others.
void addConfinedFlag(QCommandLineParser& parser);
bool isConfined(const QCommandLineParser& parser);

/// Reads the options.
LoadFlags readLoadFlags(const QCommandLineParser& parser);

} // namespace Atelier::Vel::Tool
