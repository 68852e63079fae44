#pragma once

#include "state/scopedbinding.h"

namespace Atelier::Vel {

/// Saves the binding of an indexed shader storage binding point and restores it on destruction.
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
