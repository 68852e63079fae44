#pragma once

#include "state/scopedbinding.h"

namespace Atelier::Vel {

/// Puts back what was bound to an indexed binding point of shader storage buffers.
class ScopedStorageBinding {
public:
    explicit ScopedStorageBinding(GLuint point);
    ~ScopedStorageBinding();
    ScopedStorageBinding(const ScopedStorageBinding&) = delete;
    ScopedStorageBinding& operator=(const ScopedStorageBinding&) = delete;

private:
    GLuint _point;
    GLint _buffer = 0;
    GLint64 _start = 0;
    GLint64 _size = 0; // 0 for the whole buffer, whatever its size
};

} // namespace Atelier::Vel
