#include "program.h"

#include <sys/prctl.h>

#include <linux/capability.h>

#include <QtCore/QProcess>

namespace Atelier::Vel::Testing {

namespace {

constexpr int kPatienceMilliseconds = 300000;

class Process : public QProcess {
public:
    explicit Process(const std::function<void()>& beforeStart) : _beforeStart(beforeStart) {}

protected:
    void setupChildProcess() override {
        if (_beforeStart)
            _beforeStart();
    }

private:
    const std::function<void()>& _beforeStart;
};

} // namespace

ProgramSurroundings withoutPrivileges() {
    ProgramSurroundings surroundings;
    surroundings.beforeStart = [] {
        prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0);
        prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0);
    };
    return surroundings;
}

ProgramResult runProgram(const QStringList& arguments, const ProgramSurroundings& surroundings) {
    Process process(surroundings.beforeStart);
    process.setWorkingDirectory(QStringLiteral(VELMODEL_SOURCE_DIR));
    process.setProcessEnvironment(surroundings.environment);
    if (!surroundings.outputFile.isEmpty())
        process.setStandardOutputFile(surroundings.outputFile);
    if (!surroundings.errorFile.isEmpty())
        process.setStandardErrorFile(surroundings.errorFile);
    process.start(QStringLiteral(VELMODEL_PROGRAM), arguments);
    ProgramResult result;
    if (process.waitForFinished(kPatienceMilliseconds) && process.exitStatus() == QProcess::NormalExit)
        result.exitCode = process.exitCode();
    result.output = process.readAllStandardOutput();
    result.errors = QString::fromLocal8Bit(process.readAllStandardError());
    return result;
}

QString samplePath(const QString& name) {
    return QStringLiteral("samples/%1/%1.obj").arg(name);
}

QString absoluteSamplePath(const QString& name) {
    return QStringLiteral(VELMODEL_SOURCE_DIR "/") + samplePath(name);
}

} // namespace Atelier::Vel::Testing
