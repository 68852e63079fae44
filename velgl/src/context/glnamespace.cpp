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
    case GLKind::Renderbuffer:
        glDeleteRenderbuffers(1, &name);
        return;
    case GLKind::Program:
        glDeleteProgram(name);
        return;
    case GLKind::VertexArray:
        glDeleteVertexArrays(1, &name);
        return;
    case GLKind::Framebuffer:
        glDeleteFramebuffers(1, &name);
        return;
    }
}

void deleteNames(const GLNameNode& names) {
    for (const auto& [kind, name] : names)
        deleteName(kind, name);
}

} // namespace

void GLNameSpace::release(GLNameNode& name) noexcept {
    const ContextGL* gl = findKnownContext();
    if (gl && gl->knows(*this)) {
        deleteNames(name);
        return;
    }
    const std::lock_guard lock(_mutex);
    if (_isClosed)
        return;
    _queued.splice(_queued.end(), name);
    _isAnyQueued = true;
}

void GLNameSpace::deleteQueue() noexcept {
    GLNameNode names;
    {
        const std::lock_guard lock(_mutex);
        names.swap(_queued);
        _isAnyQueued = false;
    }
    deleteNames(names);
}

void GLNameSpace::close() noexcept {
    GLNameNode names;
    const std::lock_guard lock(_mutex);
    _isClosed = true;
    names.swap(_queued);
    _isAnyQueued = false;
}

} // namespace Atelier::Vel
