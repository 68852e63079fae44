#pragma once

#include <memory>

#include <velgl/opengldevicecontext.h>

#include "context/contextgl.h"

namespace Atelier::Vel {

/// Reaches the part of a device context that its header does not show.
struct ContextAccess {
    static std::unique_ptr<ContextGL>& gl(OpenGLDeviceContext& context);
};

} // namespace Atelier::Vel
