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

/// What is known about a load.
struct LoadFacts {
    LoadReport report;
    ModelFiles files;   ///< the files that the model may name
    double seconds = 0; ///< of the load, including an upload and excluding the reordering of draw data
};

struct LoadedData : LoadFacts {
    DrawData data; ///< null for a file without faces
};

struct LoadedModel : LoadFacts {
    std::unique_ptr<GPUModel> model;
};

/// Reads a file into draw data, without OpenGL. Shows a progress bar for large files on a terminal.
/// Returns: none if the file cannot be loaded; the cause was reported.
std::optional<LoadedData> loadData(const QString& path, const LoadFlags& flags);

/// Whether anything of a model can be drawn. Reports it if not.
bool isDrawable(const QString& path, const LoadFacts& facts);

/// An OpenGL context without a window, and models loaded into it. Requires: models are destroyed before it.
class ModelSession {
public:
    /// `flags` apply to all loads.
    explicit ModelSession(const LoadFlags& flags) : _flags(flags) {}
    ~ModelSession();
    ModelSession(const ModelSession&) = delete;
    ModelSession& operator=(const ModelSession&) = delete;

    /// Makes the context current. Returns: false, after the cause was reported, if there is none.
    bool open();

    /// Loads a file. Shows a progress bar for large files on a terminal.
    /// Returns: a null model if the file cannot be loaded; the cause was reported.
    LoadedModel load(const QString& path) const;

private:
    QSharedPointer<OpenGLDeviceContext> _context;
    LoadFlags _flags;
};

} // namespace Atelier::Vel::Tool
