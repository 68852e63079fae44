#pragma once

#include <memory>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <velgl/gpumodel.h>
#include <velmodel/modelfiles.h>
#include <velmodel/objloader.h>

#include "exitcode.h"

namespace Atelier::Vel {
class OpenGLDeviceContext;
}

namespace Atelier::Vel::Tool {

/// A model with what its load met.
struct LoadedModel {
    std::unique_ptr<GPUModel> model;
    LoadReport report;
    ModelFiles files;   ///< those that it may name
    double seconds = 0; ///< what the load took, upload included
};

/// An OpenGL context without a window, and models loaded into it. Models have to go before it does.
class ModelSession {
public:
    /// With `options`, all loads are done so.
    explicit ModelSession(const LoadOptions& options) : _options(options) {}
    ~ModelSession();
    ModelSession(const ModelSession&) = delete;
    ModelSession& operator=(const ModelSession&) = delete;

    /// Returns: whether there is a context now; when not, the cause was reported.
    bool open();

    /// Loads a file, with a progress bar where it helps.
    /// Returns: a null model when the file cannot be loaded; the cause was reported.
    LoadedModel load(const QString& path) const;

private:
    QSharedPointer<OpenGLDeviceContext> _context;
    LoadOptions _options;
};

} // namespace Atelier::Vel::Tool
