#include <epoxy/gl.h>

#include "windows/liveobjects.h"

#include <gtest/gtest.h>

namespace Atelier::Vel::Testing {

namespace {

// The driver reuses names, so they stay low; expectNewNamesToBeCounted() checks that.
constexpr GLuint kHighestName = 2000;

void expectNewNamesToBeCounted() {
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    EXPECT_LT(buffer, kHighestName) << "further objects are not counted";
    glDeleteBuffers(1, &buffer);
}

} // namespace

LiveObjects LiveObjects::count() {
    expectNewNamesToBeCounted();
    LiveObjects live;
    for (GLuint name = 1; name <= kHighestName; ++name) {
        live.buffers += glIsBuffer(name);
        live.textures += glIsTexture(name);
        live.programs += glIsProgram(name);
        live.vertexArrays += glIsVertexArray(name);
    }
    return live;
}

} // namespace Atelier::Vel::Testing
