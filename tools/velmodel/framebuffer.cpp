#include "framebuffer.h"

namespace Atelier::Vel::Tool {

namespace {

GLuint makeColour(GLenum format, QSize size, int samples) {
    GLuint name = 0;
    glGenTextures(1, &name);
    if (samples > 0) {
        glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, name);
        glTexStorage2DMultisample(GL_TEXTURE_2D_MULTISAMPLE, samples, format, size.width(), size.height(),
                                  GL_TRUE);
    } else {
        glBindTexture(GL_TEXTURE_2D, name);
        glTexStorage2D(GL_TEXTURE_2D, 1, format, size.width(), size.height());
    }
    return name;
}

GLuint makeDepth(QSize size, int samples) {
    GLuint name = 0;
    glGenRenderbuffers(1, &name);
    glBindRenderbuffer(GL_RENDERBUFFER, name);
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, GL_DEPTH_COMPONENT32F, size.width(),
                                     size.height());
    return name;
}

GLenum attachment(std::size_t index) {
    return static_cast<GLenum>(GL_COLOR_ATTACHMENT0 + index);
}

} // namespace

Framebuffer::Framebuffer(const Format& format) : _size(format.size) {
    glGenFramebuffers(1, &_name);
    glBindFramebuffer(GL_FRAMEBUFFER, _name);
    const GLenum target = format.samples > 0 ? GL_TEXTURE_2D_MULTISAMPLE : GL_TEXTURE_2D;
    for (const GLenum colour : format.colours) {
        _colours.push_back(makeColour(colour, _size, format.samples));
        glFramebufferTexture2D(GL_FRAMEBUFFER, attachment(_colours.size() - 1), target, _colours.back(), 0);
    }
    if (format.hasDepth) {
        _depth = makeDepth(_size, format.samples);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, _depth);
    }
}

Framebuffer::~Framebuffer() {
    glDeleteFramebuffers(1, &_name);
    glDeleteRenderbuffers(1, &_depth);
    glDeleteTextures(static_cast<GLsizei>(_colours.size()), _colours.data());
}

bool Framebuffer::isComplete() const {
    glBindFramebuffer(GL_FRAMEBUFFER, _name);
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

void Framebuffer::bind() const {
    glBindFramebuffer(GL_FRAMEBUFFER, _name);
    glViewport(0, 0, _size.width(), _size.height());
}

void Framebuffer::resolveInto(const Framebuffer& target) const {
    glBindFramebuffer(GL_READ_FRAMEBUFFER, _name);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, target._name);
    for (std::size_t index = 0; index < _colours.size(); ++index) {
        glReadBuffer(attachment(index));
        // Only this attachment is written to. OpenGL requires it at its own position in the list.
        std::vector<GLenum> buffers(_colours.size(), GL_NONE);
        buffers[index] = attachment(index);
        glDrawBuffers(static_cast<GLsizei>(buffers.size()), buffers.data());
        glBlitFramebuffer(0, 0, _size.width(), _size.height(), 0, 0, _size.width(), _size.height(),
                          GL_COLOR_BUFFER_BIT, GL_NEAREST);
    }
}

} // namespace Atelier::Vel::Tool
