#pragma once

#include <epoxy/gl.h>

#include <vector>

namespace Atelier::Vel::Testing {

/// The ways in which a driver can fail.
enum class GLFault {
    NoBufferNames,
    NoBufferNamesAndNoError,
    NoBufferMemory,
    NoVertexArrays,
    NoTextureNames,
    NoTextureMemory,
    NoMemoryForLargeTextures, ///< of more than one texel
    NoMemoryForDrawing,
    NoFramebuffers,
    NoFramebufferMemory, ///< for textures and renderbuffers of a framebuffer
    NoShaders,
    NoPrograms,
    EndlessErrors, ///< as in a context that is lost
};

/// Makes the driver fail in one way in its lifetime. A failure is reported as GL_OUT_OF_MEMORY where a real
/// driver would report it. Only one may live at a time.
/// Requires: a current context.
class FaultyDriver {
public:
    explicit FaultyDriver(GLFault fault);
    /// Makes glGetError() return these errors, in order, and no others.
    explicit FaultyDriver(const std::vector<GLenum>& errors);
    ~FaultyDriver();
    FaultyDriver(const FaultyDriver&) = delete;
    FaultyDriver& operator=(const FaultyDriver&) = delete;

private:
    struct Functions;
    static Functions real();
    static void use(const Functions& functions);
};

} // namespace Atelier::Vel::Testing
