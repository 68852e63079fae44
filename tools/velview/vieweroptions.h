#pragma once

#include <optional>

#include <QtCore/QStringList>

#include "loadflags.h"

namespace Atelier::Vel::Viewer {

/// The exit codes of velview, which are those of velmodel.
enum class ExitCode { Done = 0, WrongUsage = 2, NoOpenGL = 3, CannotWrite = 4 };

/// What the command line asks for.
struct ViewerOptions {
    Tool::LoadFlags load;
    QString up = QStringLiteral("+Y");
    bool isWatching = false;                       ///< whether changed files are loaded again
    QString verbosity = QStringLiteral("warning"); ///< one of Tool::verbosityLevels()
    QStringList files;
};

/// Reads the command line, without the name of the program. Prints the answers to --help and --version, and
/// reports mistakes. Requires: a QCoreApplication.
/// Returns: none if the program has to end with `exitCode`.
std::optional<ViewerOptions> readViewerOptions(const QStringList& arguments, ExitCode& exitCode);

} // namespace Atelier::Vel::Viewer
