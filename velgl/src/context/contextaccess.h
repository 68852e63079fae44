#pragma once

#include <memory>

#include <velgl/opengldevicecontext.h>

#include "context/contextgl.h"

namespace Atelier::Vel {

/// Gives VelGL access to the private part of a device context.
struct ContextAccess {
    static std::unique_ptr<ContextGL>& gl(OpenGLDeviceContext& context);
    /// The same as OpenGLDeviceContext::current(), but null for a native context that VelGL has not met.
    static QSharedPointer<OpenGLDeviceContext> known() noexcept;
    /// Returns: whether current() and known() give an object that setCurrent() has put in place.
    static bool isSubstituted() noexcept;
};

} // namespace Atelier::Vel
