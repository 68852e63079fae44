#include "childload.h"

#include <cstdio>
#include <memory>
#include <new>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QtCore/QDataStream>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>

#include "acceptingcontext.h"
#include "support/messagelog.h"

namespace Atelier::Vel::Testing {

namespace {

constexpr unsigned int kPatienceSeconds = 3600;
constexpr double kMiB = 1024.0 * 1024.0;

/// The value, in kilobytes, of a line of /proc/self/status.
quint64 statusBytes(const char* key) {
    QFile status(QStringLiteral("/proc/self/status"));
    status.open(QIODevice::ReadOnly);
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(key))
            return line.mid(line.indexOf(':') + 1).simplified().split(' ').first().toULongLong() * 1024;
    return 0;
}

ChildLoad loadHere(const QString& path) {
    const MessageLog log;
    OpenGLDeviceContext::setCurrent(Bench::makeAcceptingContext());
    ChildLoad result;
    result.hasEnded = true;
    const quint64 before = statusBytes("VmRSS");
    QElapsedTimer timer;
    timer.start();
    std::unique_ptr<GPUModel> model;
    try {
        model.reset(loadModelFromOBJFile(path, result.error, {}, &result.report));
    } catch (const std::bad_alloc&) {
        result.isBadAlloc = true;
    }
    result.seconds = static_cast<double>(timer.nsecsElapsed()) * 1e-9;
    result.peakBytes = statusBytes("VmHWM") - before;
    result.isLoaded = model != nullptr;
    for (int i = 0; model != nullptr && i < model->drawableCount(); ++i) {
        result.commands += model->drawable(i)->drawElementsIndirectCommands().size();
        result.indexCount = model->drawable(i)->indexCount();
    }
    for (const QString& warning : log.texts(QtWarningMsg))
        result.warnings << warning;
    return result;
}

QDataStream& operator<<(QDataStream& out, const ChildLoad& load) {
    const LoadReport& report = load.report;
    return out << load.hasEnded << load.isLoaded << load.isBadAlloc << load.error << load.warnings
               << report.bytesRead << report.faces << report.droppedFaces << report.facesWithoutGroup
               << report.statistics.untriangulatedFaces << report.statistics.substitutedCorners
               << report.statistics.corners << report.statistics.vertices << report.statistics.triangles
               << load.commands << load.indexCount << load.peakBytes << load.seconds;
}

QDataStream& operator>>(QDataStream& in, ChildLoad& load) {
    LoadReport& report = load.report;
    return in >> load.hasEnded >> load.isLoaded >> load.isBadAlloc >> load.error >> load.warnings >>
           report.bytesRead >> report.faces >> report.droppedFaces >> report.facesWithoutGroup >>
           report.statistics.untriangulatedFaces >> report.statistics.substitutedCorners >>
           report.statistics.corners >> report.statistics.vertices >> report.statistics.triangles >>
           load.commands >> load.indexCount >> load.peakBytes >> load.seconds;
}

[[noreturn]] void beChild(const QString& path, const std::function<void()>& prepare, int output) {
    alarm(kPatienceSeconds);
    if (prepare)
        prepare();
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << loadHere(path);
    QFile file;
    file.open(output, QIODevice::WriteOnly | QIODevice::Unbuffered);
    file.write(bytes);
    _exit(0);
}

} // namespace

ChildLoad loadInChild(const QString& path, const std::function<void()>& prepare) {
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0)
        return {};
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0)
        beChild(path, prepare, ends[1]);
    close(ends[1]);
    QFile file;
    file.open(ends[0], QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    const QByteArray bytes = file.readAll();
    int status = 0;
    waitpid(child, &status, 0);
    ChildLoad result;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return result;
    QDataStream stream(bytes);
    stream >> result;
    std::printf("%.2f s, peak %.0f MiB, file %.0f MiB\n", result.seconds,
                static_cast<double>(result.peakBytes) / kMiB,
                static_cast<double>(QFileInfo(path).size()) / kMiB);
    return result;
}

} // namespace Atelier::Vel::Testing
