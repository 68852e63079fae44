#pragma once

#include <QtCore/QSharedPointer>

#include <velgl/gpumodel.h>
#include <velgl/opengldevicecontext.h>

namespace Atelier::Vel::Fuzzing {

/// A context without OpenGL that reads every uploaded byte, and keeps a copy.
QSharedPointer<OpenGLDeviceContext> makeCheckingContext();

/// Ends the process unless the drawables of a model can be drawn: the ranges of commands are inside the index
/// buffer, indices are less than the vertex count, and every stream has that number of vertices.
/// Requires: the model was uploaded through a checking context.
/// Returns:  the number of indices of all commands.
quint64 requireDrawable(const GPUModel& model);

} // namespace Atelier::Vel::Fuzzing
