#pragma once

#include <functional>

#include <QtCore/QByteArray>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Atelier::Vel::Testing {

/// What the velmodel program left behind.
struct ProgramResult {
    int exitCode = -1; ///< -1 when it crashed or did not end
    QByteArray output;
    QString errors;
};

struct ProgramSurroundings {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QString outputFile; ///< where standard output goes instead
    QString errorFile;  ///< where standard error goes instead
    /// What happens in the new process before the program starts; not to allocate.
    std::function<void()> beforeStart;
};

/// Nobody may read and write where permissions forbid it, not even root.
ProgramSurroundings withoutPrivileges();

/// Runs velmodel in the source directory and waits for its end.
ProgramResult runProgram(const QStringList& arguments, const ProgramSurroundings& surroundings = {});

/// "samples/gear/gear.obj" for "gear".
QString samplePath(const QString& name);

/// The same as an absolute path.
QString absoluteSamplePath(const QString& name);

} // namespace Atelier::Vel::Testing
