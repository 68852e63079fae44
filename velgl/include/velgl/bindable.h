#pragma once

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

/// Something that can be made the current object of its OpenGL binding target.
class VELGL_EXPORT Bindable {
public:
    virtual ~Bindable();

    /// Makes this object current on its target and remembers what was current there.
    /// Requires: a current OpenGLDeviceContext. Returns: false when there is none or the object could not be
    /// made.
    virtual bool bind() = 0;

    /// Puts back what was current before the matching bind().
    virtual void unbind() = 0;

protected:
    Bindable() = default;
    Bindable(const Bindable&) = default;
    Bindable& operator=(const Bindable&) = default;
};

} // namespace Atelier::Vel
