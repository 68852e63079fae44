#include <epoxy/gl.h>

#include "context/contextmark.h"

#include <cstring>

#include <QtCore/QUuid>

namespace Atelier::Vel {

namespace {

// A name becomes an object when it is bound first.
GLuint madeBuffer() {
    GLint previous = 0;
    glGetIntegerv(GL_COPY_WRITE_BUFFER_BINDING, &previous);
    GLuint name = 0;
    glGenBuffers(1, &name);
    glBindBuffer(GL_COPY_WRITE_BUFFER, name);
    glBindBuffer(GL_COPY_WRITE_BUFFER, static_cast<GLuint>(previous));
    return name;
}

GLuint madeVertexArray() {
    GLint previous = 0;
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &previous);
    GLuint name = 0;
    glGenVertexArrays(1, &name);
    glBindVertexArray(name);
    glBindVertexArray(static_cast<GLuint>(previous));
    return name;
}

} // namespace

ContextMark::ContextMark(Of of)
    : _identifier(of == Of::Group ? GL_BUFFER : GL_VERTEX_ARRAY),
      _label((of == Of::Group ? "velgl share group " : "velgl context ") +
             QUuid::createUuid().toByteArray()) {
    _name = of == Of::Group ? madeBuffer() : madeVertexArray();
    glObjectLabel(_identifier, _name, _label.size(), _label.constData());
}

bool ContextMark::isCurrent() const noexcept {
    const GLboolean exists = _identifier == GL_BUFFER ? glIsBuffer(_name) : glIsVertexArray(_name);
    if (exists == GL_FALSE)
        return false;
    constexpr GLsizei kRoom = 80;
    static_assert(sizeof "velgl share group {00000000-0000-0000-0000-000000000000}" < kRoom);
    char label[kRoom] = {};
    GLsizei length = 0;
    glGetObjectLabel(_identifier, _name, kRoom, &length, label);
    return length == _label.size() && std::memcmp(label, _label.constData(), std::size_t(length)) == 0;
}

} // namespace Atelier::Vel
