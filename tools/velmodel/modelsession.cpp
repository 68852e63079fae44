#include "modelsession.h"

#include <utility>

#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>

#include <velgl/opengldevicecontext.h>

#include "console.h"
#include "loaderrors.h"
#include "progressbar.h"
#include "repairs.h"

namespace Atelier::Vel::Tool {

namespace {

LoadProgress shownBy(ProgressBar& bar) {
    return [&bar](const LoadStep& step) {
        bar.show(step);
        return true;
    };
}

/// Calls `load` with a variable for its error and a progress function. Fills `facts`, except the report.
/// Returns: false, after the error was reported, if there was one.
template<typename Load>
bool loadFile(const QString& path, const LoadOptions& options, LoadFacts& facts, const Load& load) {
    QString error;
    QElapsedTimer timer;
    timer.start();
    {
        ProgressBar bar(path, QFileInfo(path).size());
        load(error, shownBy(bar));
    }
    facts.seconds = double(timer.nsecsElapsed()) * 1e-9;
    if (options.files == LoadOptions::Files::InOwnFolder)
        facts.files = ModelFiles(QFileInfo(path).path());
    if (error.isNull())
        return true;
    reportError(errorLine(error, facts.report));
    return false;
}

} // namespace

std::optional<LoadedData> loadData(const QString& path, const LoadFlags& flags) {
    LoadedData loaded;
    const auto load = [&](QString& error, const LoadProgress& progress) {
        loaded.data = readDrawDataFromOBJFile(path, error, progress, &loaded.report, flags.options);
    };
    if (!loadFile(path, flags.options, loaded, load))
        return std::nullopt;
    reportRepairs(loaded.report);
    if (flags.isOptimised) {
        ProgressBar bar(path, QFileInfo(path).size());
        loaded.data = loaded.data.optimised(shownBy(bar));
    }
    return loaded;
}

bool isDrawable(const QString& path, const LoadFacts& facts) {
    const bool hasTriangles = facts.report.statistics.triangles != 0;
    if (!hasTriangles)
        reportError(QStringLiteral("%1: There is nothing to draw: the model has no triangles").arg(path));
    return hasTriangles;
}

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
    std::optional<LoadedData> read = loadData(path, _flags);
    if (!read)
        return loaded;
    static_cast<LoadFacts&>(loaded) = *read;
    loaded.model = std::make_unique<GPUModel>();
    loaded.model->setLabel(path);
    QElapsedTimer timer;
    timer.start();
    upload(std::move(read->data), *loaded.model, {makeIdentityInstance()});
    loaded.seconds += double(timer.nsecsElapsed()) * 1e-9;
    return loaded;
}

} // namespace Atelier::Vel::Tool
