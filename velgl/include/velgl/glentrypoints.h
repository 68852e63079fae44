#pragma once

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

/// The OpenGL functions with which clients fill textures and query limits, so that a client need not load
/// OpenGL itself. Parameters are those of the OpenGL function of the same name. The members are data: a test
/// can replace them.
///
/// Each function does nothing when no context is current that VelGL can use.
/// Threads: the functions are called on the thread of the current context. Replace them while no other thread
/// calls them.
struct GLEntryPoints {
    /// Sets a pixel store parameter; it stays set.
    void (*pixelStorei)(unsigned int name, int value);
    /// Sets a parameter of the texture that is bound to `target` on the active unit.
    void (*texParameteri)(unsigned int target, unsigned int name, int value);
    /// Stores the image of one level of the texture that is bound to `target`. `pixels` points to rows in
    /// memory, first row first; null leaves the image undefined. Of the client's unpack settings only the
    /// alignment of the rows counts: row length, skips, byte order and a bound unpack buffer are set aside
    /// for the call.
    void (*texImage2D)(unsigned int target, int level, int internalFormat, int width, int height, int border,
                       unsigned int format, unsigned int type, const void* pixels);
    /// Makes the smaller levels of the texture that is bound to `target` from its level 0. Does nothing for a
    /// GL_TEXTURE_2D without an image.
    void (*generateMipmap)(unsigned int target);
    /// Writes the values of a state variable to `values`, which has room for all of them. Writes nothing
    /// without a context.
    void (*getIntegerv)(unsigned int name, int* values);
    /// Returns: the text of that number of a list of texts, such as GL_EXTENSIONS. Null without a context.
    const unsigned char* (*getStringi)(unsigned int name, unsigned int index);
};

/// Returns: the functions of this process, to be called or replaced. They call the driver of the context that
/// is current at the time of the call; this function needs no context.
VELGL_EXPORT GLEntryPoints& glEntryPoints();

} // namespace Atelier::Vel
