#pragma once

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

/// The OpenGL functions that clients fill textures with, and ask for the limits of, as the driver of the
/// current context has them. They are data, so that a test can put its own in their place.
struct GLEntryPoints {
    void (*pixelStorei)(unsigned int name, int value);
    void (*texParameteri)(unsigned int target, unsigned int name, int value);
    void (*texImage2D)(unsigned int target, int level, int internalFormat, int width, int height, int border,
                       unsigned int format, unsigned int type, const void* pixels);
    void (*generateMipmap)(unsigned int target);
    void (*getIntegerv)(unsigned int name, int* values);
};

/// Requires: a current context at the time of a call through one of the members, not at the time of this
/// call.
VELGL_EXPORT GLEntryPoints& glEntryPoints();

} // namespace Atelier::Vel
