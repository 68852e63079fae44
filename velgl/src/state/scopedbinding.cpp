#include "state/scopedbinding.h"

namespace Atelier::Vel {

GLenum bufferBindingQuery(GLenum target) {
    switch (target) {
    case GL_ARRAY_BUFFER:
        return GL_ARRAY_BUFFER_BINDING;
    case GL_ELEMENT_ARRAY_BUFFER:
        return GL_ELEMENT_ARRAY_BUFFER_BINDING;
    case GL_DRAW_INDIRECT_BUFFER:
        return GL_DRAW_INDIRECT_BUFFER_BINDING;
    case GL_SHADER_STORAGE_BUFFER:
        return GL_SHADER_STORAGE_BUFFER_BINDING;
    case GL_UNIFORM_BUFFER:
        return GL_UNIFORM_BUFFER_BINDING;
    case GL_COPY_READ_BUFFER:
        return GL_COPY_READ_BUFFER_BINDING;
    case GL_COPY_WRITE_BUFFER:
        return GL_COPY_WRITE_BUFFER_BINDING;
    case GL_PIXEL_PACK_BUFFER:
        return GL_PIXEL_PACK_BUFFER_BINDING;
    case GL_PIXEL_UNPACK_BUFFER:
        return GL_PIXEL_UNPACK_BUFFER_BINDING;
    case GL_ATOMIC_COUNTER_BUFFER:
        return GL_ATOMIC_COUNTER_BUFFER_BINDING;
    case GL_DISPATCH_INDIRECT_BUFFER:
        return GL_DISPATCH_INDIRECT_BUFFER_BINDING;
    case GL_TEXTURE_BUFFER:
        return GL_TEXTURE_BUFFER; // the only target that is its own query
    case GL_TRANSFORM_FEEDBACK_BUFFER:
        return GL_TRANSFORM_FEEDBACK_BUFFER_BINDING;
    default:
        return 0;
    }
}

GLenum textureBindingQuery(GLenum target) {
    switch (target) {
    case GL_TEXTURE_1D:
        return GL_TEXTURE_BINDING_1D;
    case GL_TEXTURE_2D:
        return GL_TEXTURE_BINDING_2D;
    case GL_TEXTURE_3D:
        return GL_TEXTURE_BINDING_3D;
    case GL_TEXTURE_1D_ARRAY:
        return GL_TEXTURE_BINDING_1D_ARRAY;
    case GL_TEXTURE_2D_ARRAY:
        return GL_TEXTURE_BINDING_2D_ARRAY;
    case GL_TEXTURE_RECTANGLE:
        return GL_TEXTURE_BINDING_RECTANGLE;
    case GL_TEXTURE_CUBE_MAP:
        return GL_TEXTURE_BINDING_CUBE_MAP;
    case GL_TEXTURE_CUBE_MAP_ARRAY:
        return GL_TEXTURE_BINDING_CUBE_MAP_ARRAY;
    default:
        return 0;
    }
}

GLuint currentName(GLenum query) {
    GLint name = 0;
    glGetIntegerv(query, &name);
    return static_cast<GLuint>(name);
}

void rebindBuffer(GLenum target, GLuint name) {
    glBindBuffer(target, glIsBuffer(name) ? name : 0);
}

void rebindTexture(GLenum target, GLuint name) {
    glBindTexture(target, glIsTexture(name) ? name : 0);
}

void rebindVertexArray(GLuint name) {
    glBindVertexArray(glIsVertexArray(name) ? name : 0);
}

void rebindProgram(GLuint name) {
    glUseProgram(glIsProgram(name) ? name : 0);
}

void rebindRenderbuffer(GLuint name) {
    glBindRenderbuffer(GL_RENDERBUFFER, glIsRenderbuffer(name) ? name : 0);
}

void rebindFramebuffer(GLenum target, GLuint name) {
    glBindFramebuffer(target, glIsFramebuffer(name) ? name : 0);
}

ScopedBufferBinding::ScopedBufferBinding(GLenum target, GLuint buffer)
    : _target(target), _previous(currentName(bufferBindingQuery(target))) {
    glBindBuffer(target, buffer);
}

ScopedTextureBinding::ScopedTextureBinding(GLenum target, GLuint texture)
    : _target(target),
      _unit(currentName(GL_ACTIVE_TEXTURE)),
      _previous(currentName(textureBindingQuery(target))) {
    glBindTexture(target, texture);
}

ScopedTextureBinding::~ScopedTextureBinding() {
    glActiveTexture(_unit);
    rebindTexture(_target, _previous);
}

ScopedFramebufferBinding::ScopedFramebufferBinding(GLenum target, GLuint framebuffer)
    : _target(target),
      _previous(currentName(target == GL_DRAW_FRAMEBUFFER ? GL_DRAW_FRAMEBUFFER_BINDING
                                                          : GL_READ_FRAMEBUFFER_BINDING)) {
    glBindFramebuffer(target, framebuffer);
}

ScopedRenderbufferBinding::ScopedRenderbufferBinding(GLuint renderbuffer)
    : _previous(currentName(GL_RENDERBUFFER_BINDING)) {
    glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
}

ScopedTextureUnit::ScopedTextureUnit(GLuint unit) : _previous(currentName(GL_ACTIVE_TEXTURE)) {
    glActiveTexture(GL_TEXTURE0 + unit);
}

} // namespace Atelier::Vel
