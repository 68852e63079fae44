#include "modelsession.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <velgl/opengldevicecontext.h>

#include "console.h"
#include "progressbar.h"

namespace Atelier::Vel::Tool {

namespace {

QString reasonForFailure(const QString& path) {
    const QFileInfo info(path);
    if (path.isEmpty() || !info.exists())
        return QStringLiteral("No such file");
    if (info.isDir())
        return QStringLiteral("Is a directory");
    if (!info.isFile())
        return QStringLiteral("Is not a regular file");
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QStringLiteral("Cannot be read") : file.errorString();
}

// The loader's text names the file that it could not read, which need not be the model itself.
QString namedFile(const QString& error) {
    const int start = error.indexOf(QLatin1Char('\'')) + 1;
    return error.mid(start, error.lastIndexOf(QLatin1Char('\'')) - start);
}

QString errorLine(const QString& path, const QString& error) {
    const QString file = namedFile(error);
    const QString line = QStringLiteral("%1: %2").arg(error, reasonForFailure(file));
    return file == path ? line : QStringLiteral("%1: %2").arg(path, line);
}

} // namespace

ModelSession::~ModelSession() {
    if (_context)
        _context->doneCurrent();
}

bool ModelSession::open() {
    QString error;
    _context = OpenGLDeviceContext::createHeadless({}, error);
    if (_context && _context->makeCurrent()) {
        qInfo("OpenGL: %s", qPrintable(_context->description()));
        return true;
    }
    reportError(
        QStringLiteral("No OpenGL: %1").arg(_context ? QStringLiteral("the context cannot be used") : error));
    _context.clear();
    return false;
}

LoadedModel ModelSession::load(const QString& path) const {
    LoadedModel loaded;
    QString error;
    QElapsedTimer timer;
    timer.start();
    {
        ProgressBar bar(path, QFileInfo(path).size());
        const LoadProgress progress = [&bar](qint64 done, qint64) {
            bar.show(done);
            return true;
        };
        loaded.model.reset(loadModelFromOBJFile(path, error, progress, &loaded.report));
    }
    loaded.seconds = double(timer.nsecsElapsed()) * 1e-9;
    if (!loaded.model)
        reportError(errorLine(path, error));
    return loaded;
}

} // namespace Atelier::Vel::Tool
