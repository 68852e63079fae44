#include <epoxy/gl.h>

#include "objects/bufferoperations.h"

#include "objects/labels.h"
#include "state/scopedbinding.h"

namespace Atelier::Vel {

namespace {

qint64 bufferSize(const ContextGL& gl, const GLName& buffer) {
    GLint64 size = 0;
    if (gl.features().directStateAccess) {
        glGetNamedBufferParameteri64v(buffer.value(), GL_BUFFER_SIZE, &size);
    } else {
        const ScopedBufferBinding binding(GL_COPY_READ_BUFFER, buffer.value());
        glGetBufferParameteri64v(GL_COPY_READ_BUFFER, GL_BUFFER_SIZE, &size);
    }
    return size;
}

} // namespace

GLName makeBuffer(const ContextGL& gl, const QString& label) {
    GLName buffer(GLKind::Buffer, gl.group());
    GLuint name = 0;
    if (gl.features().directStateAccess) {
        glCreateBuffers(1, &name);
    } else {
        glGenBuffers(1, &name);
        // A generated name becomes a buffer with its first bind.
        const ScopedBufferBinding binding(GL_COPY_WRITE_BUFFER, name);
    }
    buffer.set(name);
    if (name != 0)
        labelObject(GL_BUFFER, name, encodedLabel(label));
    return buffer;
}

bool fillBuffer(const ContextGL& gl, const GLName& buffer, const void* data, qint64 size,
                unsigned int usage) {
    if (gl.features().directStateAccess) {
        glNamedBufferData(buffer.value(), size, data, usage);
    } else {
        const ScopedBufferBinding binding(GL_COPY_WRITE_BUFFER, buffer.value());
        glBufferData(GL_COPY_WRITE_BUFFER, size, data, usage);
    }
    return bufferSize(gl, buffer) == size;
}

void writeBuffer(const ContextGL& gl, const GLName& buffer, qint64 offset, const void* data, qint64 size) {
    if (gl.features().directStateAccess) {
        glNamedBufferSubData(buffer.value(), offset, size, data);
    } else {
        const ScopedBufferBinding binding(GL_COPY_WRITE_BUFFER, buffer.value());
        glBufferSubData(GL_COPY_WRITE_BUFFER, offset, size, data);
    }
}

QByteArray readBuffer(const ContextGL& gl, const GLName& buffer) {
    const qint64 size = bufferSize(gl, buffer);
    if (size <= 0 || size > kMaxReadBackSize)
        return {};
    QByteArray content(static_cast<int>(size), '\0');
    if (gl.features().directStateAccess) {
        glGetNamedBufferSubData(buffer.value(), 0, size, content.data());
    } else {
        const ScopedBufferBinding binding(GL_COPY_READ_BUFFER, buffer.value());
        glGetBufferSubData(GL_COPY_READ_BUFFER, 0, size, content.data());
    }
    return content;
}

} // namespace Atelier::Vel
