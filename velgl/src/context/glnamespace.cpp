#include <epoxy/gl.h>

#include "context/glnamespace.h"

#include "context/currentcontext.h"

namespace Atelier::Vel {

namespace {

void deleteName(GLKind kind, unsigned int name) {
    switch (kind) {
    case GLKind::Buffer:
        glDeleteBuffers(1, &name);
        return;
    case GLKind::Texture:
        glDeleteTextures(1, &name);
        return;
    case GLKind::Program:
        glDeleteProgram(name);
        return;
    case GLKind::VertexArray:
        glDeleteVertexArrays(1, &name);
        return;
    }
}

} // namespace

void GLNameSpace::release(GLKind kind, unsigned int name) {
    const ContextGL* gl = enterCurrentContext();
    if (gl && gl->knows(*this))
        deleteName(kind, name);
    else
        _queued.emplace_back(kind, name);
}

void GLNameSpace::deleteQueuedNames() {
    for (const auto& [kind, name] : std::exchange(_queued, {}))
        deleteName(kind, name);
}

} // namespace Atelier::Vel
