#include "state/scopedstorage.h"

namespace Atelier::Vel {

ScopedStorageBinding::ScopedStorageBinding(GLuint point) : _point(point) {
    glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, point, &_buffer);
    glGetInteger64i_v(GL_SHADER_STORAGE_BUFFER_START, point, &_start);
    glGetInteger64i_v(GL_SHADER_STORAGE_BUFFER_SIZE, point, &_size);
}

ScopedStorageBinding::~ScopedStorageBinding() {
    // Binding to an indexed point binds to the target as well.
    const GLuint general = currentName(GL_SHADER_STORAGE_BUFFER_BINDING);
    const auto buffer = static_cast<GLuint>(_buffer);
    if (!glIsBuffer(buffer))
        glBindBufferBase(GL_SHADER_STORAGE_BUFFER, _point, 0);
    else if (_size == 0)
        glBindBufferBase(GL_SHADER_STORAGE_BUFFER, _point, buffer);
    else
        glBindBufferRange(GL_SHADER_STORAGE_BUFFER, _point, buffer, _start, _size);
    rebindBuffer(GL_SHADER_STORAGE_BUFFER, general);
}

} // namespace Atelier::Vel
