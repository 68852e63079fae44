#pragma once

#include <QtCore/QSharedPointer>

#include <velgl/gpumodel.h>
#include <velgl/opengldevicecontext.h>

namespace Atelier::Vel::Fuzzing {

/// A context without OpenGL that reads all of what is uploaded, and keeps it.
QSharedPointer<OpenGLDeviceContext> makeCheckingContext();

/// Requires that the drawables of a model, which was uploaded through such a context, can be drawn: commands
/// lie inside their index buffer, indices below the vertex count, and every stream has as many vertices.
/// Returns: the number of indices of all commands.
quint64 requireDrawable(const GPUModel& model);

} // namespace Atelier::Vel::Fuzzing
