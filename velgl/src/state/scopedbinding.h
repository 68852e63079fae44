#pragma once

// Includes libepoxy's header: for sources only, before any header of Qt Gui.
#include <epoxy/gl.h>

namespace Atelier::Vel {

/// Returns: the query of what is bound to a buffer target, such as GL_ARRAY_BUFFER_BINDING for
/// GL_ARRAY_BUFFER; 0 for an unknown target.
GLenum bufferBindingQuery(GLenum target);
/// Returns: the same for a texture target.
GLenum textureBindingQuery(GLenum target);

/// Returns: the GL name that a query such as GL_ARRAY_BUFFER_BINDING gives.
GLuint currentName(GLenum query);

/// Bind an object again; bind nothing if it was deleted in between.
void rebindBuffer(GLenum target, GLuint name);
void rebindTexture(GLenum target, GLuint name);
void rebindVertexArray(GLuint name);
void rebindProgram(GLuint name);
void rebindRenderbuffer(GLuint name);
/// `target` is GL_DRAW_FRAMEBUFFER or GL_READ_FRAMEBUFFER.
void rebindFramebuffer(GLenum target, GLuint name);

/// Binds a buffer and restores the previous binding on destruction.
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

/// Binds a texture to the active unit and restores both on destruction.
class ScopedTextureBinding {
public:
    ScopedTextureBinding(GLenum target, GLuint texture);
    ~ScopedTextureBinding();
    ScopedTextureBinding(const ScopedTextureBinding&) = delete;
    ScopedTextureBinding& operator=(const ScopedTextureBinding&) = delete;

private:
    GLenum _target;
    GLenum _unit;
    GLuint _previous;
};

/// Binds a framebuffer to GL_DRAW_FRAMEBUFFER or GL_READ_FRAMEBUFFER and restores the previous binding on
/// destruction.
class ScopedFramebufferBinding {
public:
    ScopedFramebufferBinding(GLenum target, GLuint framebuffer);
    ~ScopedFramebufferBinding() { rebindFramebuffer(_target, _previous); }
    ScopedFramebufferBinding(const ScopedFramebufferBinding&) = delete;
    ScopedFramebufferBinding& operator=(const ScopedFramebufferBinding&) = delete;

private:
    GLenum _target;
    GLuint _previous;
};

/// Binds a renderbuffer and restores the previous binding on destruction.
class ScopedRenderbufferBinding {
public:
    explicit ScopedRenderbufferBinding(GLuint renderbuffer);
    ~ScopedRenderbufferBinding() { rebindRenderbuffer(_previous); }
    ScopedRenderbufferBinding(const ScopedRenderbufferBinding&) = delete;
    ScopedRenderbufferBinding& operator=(const ScopedRenderbufferBinding&) = delete;

private:
    GLuint _previous;
};

/// Activates a texture unit and restores the previous one on destruction.
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
