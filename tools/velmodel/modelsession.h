#pragma once

#include <memory>
#include <optional>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <velgl/gpumodel.h>
#include <velmodel/modelfiles.h>
#include <velmodel/objloader.h>

#include "exitcode.h"
#include "loadflags.h"

namespace Atelier::Vel {
class OpenGLDeviceContext;
}

namespace Atelier::Vel::Tool {

/// What the load of a model met.
struct LoadFacts {
    LoadReport report;
    ModelFiles files;   ///< those that the model may name
    double seconds = 0; ///< what the load took, an upload included and the reordering of draw data not
};

struct LoadedData : LoadFacts {
    DrawData data; ///< null for a file without faces
};

struct LoadedModel : LoadFacts {
    std::unique_ptr<GPUModel> model;
};

/// Reads a file into draw data, without OpenGL, with a progress bar where it helps.
/// Returns: none when the file cannot be loaded; the cause was reported.
std::optional<LoadedData> loadData(const QString& path, const LoadFlags& flags);

/// An OpenGL context without a window, and models loaded into it. Models have to go before it does.
class ModelSession {
public:
    /// `flags` are those of all loads.
    explicit ModelSession(const LoadFlags& flags) : _flags(flags) {}
    ~ModelSession();
    ModelSession(const ModelSession&) = delete;
    ModelSession& operator=(const ModelSession&) = delete;

    /// Returns: whether there is a context now; when not, the cause was reported.
    bool open();

    /// Loads a file, with a progress bar where it helps.
    /// Returns: a null model when the file cannot be loaded; the cause was reported.
    LoadedModel load(const QString& path) const;

private:
    LoadedModel loadAsItIs(const QString& path) const;
    LoadedModel loadOptimised(const QString& path) const;

    QSharedPointer<OpenGLDeviceContext> _context;
    LoadFlags _flags;
};

} // namespace Atelier::Vel::Tool
