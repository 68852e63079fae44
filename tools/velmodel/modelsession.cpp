#include "modelsession.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>

#include <velgl/opengldevicecontext.h>

#include "console.h"
#include "progressbar.h"

namespace Atelier::Vel::Tool {

namespace {

QString reasonForFailure(const QString& path, const ModelFiles& files) {
    const QFileInfo info(path);
    if (!files.allows(path))
        return QStringLiteral("Lies outside of the model's folder");
    if (path.isEmpty() || !info.exists())
        return QStringLiteral("No such file");
    if (info.isDir())
        return QStringLiteral("Is a directory");
    if (!info.isFile())
        return QStringLiteral("Is not a regular file");
    return info.isReadable() ? QStringLiteral("Cannot be read") : QStringLiteral("Permission denied");
}

// The loader's text names the file that it could not read, which need not be the model itself.
QString namedFile(const QString& error) {
    const int start = error.indexOf(QLatin1Char('\'')) + 1;
    return error.mid(start, error.lastIndexOf(QLatin1Char('\'')) - start);
}

// The model itself may be read from anywhere, the files that it names from among `files`.
QString errorLine(const QString& path, const QString& error, const ModelFiles& files) {
    const QString file = namedFile(error);
    if (file == path)
        return QStringLiteral("%1: %2").arg(error, reasonForFailure(file, ModelFiles()));
    return QStringLiteral("%1: %2: %3").arg(path, error, reasonForFailure(file, files));
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
        const LoadProgress progress = [&bar](const LoadStep& step) {
            bar.show(step);
            return true;
        };
        loaded.model.reset(loadModelFromOBJFile(path, error, progress, &loaded.report, _options));
    }
    if (_options.files == LoadOptions::Files::InOwnFolder)
        loaded.files = ModelFiles(QFileInfo(path).path());
    loaded.seconds = double(timer.nsecsElapsed()) * 1e-9;
    if (!loaded.model)
        reportError(errorLine(path, error, loaded.files));
    return loaded;
}

} // namespace Atelier::Vel::Tool
