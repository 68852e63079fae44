#pragma once

// Includes libepoxy's header: for sources only, before any header of Qt Gui.
#include <epoxy/gl.h>

namespace Atelier::Vel {

/// The binding point's query, such as GL_ARRAY_BUFFER_BINDING for GL_ARRAY_BUFFER; 0 for an unknown target.
GLenum bufferBindingQuery(GLenum target);
/// The same for texture targets.
GLenum textureBindingQuery(GLenum target);

/// The value of an integer state that names an object.
GLuint currentName(GLenum query);

/// Binds an object that may have been deleted since it was last bound; then nothing is bound.
void rebindBuffer(GLenum target, GLuint name);
void rebindTexture(GLenum target, GLuint name);
void rebindVertexArray(GLuint name);
void rebindProgram(GLuint name);

/// Binds a buffer and puts back what was bound.
class ScopedBufferBinding {
public:
    ScopedBufferBinding(GLenum target, GLuint buffer);
    ~ScopedBufferBinding() { rebindBuffer(_target, _previous); }
    ScopedBufferBinding(const ScopedBufferBinding&) = delete;
    ScopedBufferBinding& operator=(const ScopedBufferBinding&) = delete;

private:
    GLenum _target;
    GLuint _previous;
};

/// Makes a texture unit the active one and puts back which one was.
class ScopedTextureUnit {
public:
    explicit ScopedTextureUnit(GLuint unit);
    ~ScopedTextureUnit() { glActiveTexture(_previous); }
    ScopedTextureUnit(const ScopedTextureUnit&) = delete;
    ScopedTextureUnit& operator=(const ScopedTextureUnit&) = delete;

private:
    GLenum _previous;
};

} // namespace Atelier::Vel
