#pragma once

#include <functional>

#include <QtCore/QByteArray>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Atelier::Vel::Testing {

/// The result of a run of the velmodel program.
struct ProgramResult {
    int exitCode = -1; ///< -1 when it crashed or did not end
    QByteArray output;
    QString errors;
};

struct ProgramSurroundings {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QString outputFile; ///< replaces standard output
    QString errorFile;  ///< replaces standard error
    /// Runs in the new process before the program starts. Requires: it does not allocate.
    std::function<void()> beforeStart;
};

/// Enforces file permissions for root, too.
ProgramSurroundings withoutPrivileges();

/// Runs velmodel in the source directory and waits for its end.
ProgramResult runProgram(const QStringList& arguments, const ProgramSurroundings& surroundings = {});

/// "samples/gear/gear.obj" for "gear".
QString samplePath(const QString& name);

/// The same as an absolute path.
QString absoluteSamplePath(const QString& name);

} // namespace Atelier::Vel::Testing
