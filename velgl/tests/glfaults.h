#pragma once

#include <epoxy/gl.h>

#include <vector>

namespace Atelier::Vel::Testing {

/// What a driver can fail at.
enum class GLFault {
    NoBufferNames,
    NoBufferNamesAndNoError,
    NoBufferMemory,
    NoVertexArrays,
    NoTextureNames,
    NoTextureMemory,
    NoMemoryForDrawing,
    NoShaders,
    NoPrograms,
    EndlessErrors, ///< as of a context that is lost
};

/// A driver that fails at one thing while this lives, and says GL_OUT_OF_MEMORY where drivers do. Only one
/// may live at a time. Requires: a current context.
class FaultyDriver {
public:
    explicit FaultyDriver(GLFault fault);
    /// A driver that has noted these errors, and finds no others.
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
