#include "objects/framebufferdata.h"

#include "context/currentcontext.h"

namespace Atelier::Vel {

const ColorFormat& ColorFormat::of(Framebuffer::Color color) {
    static constexpr ColorFormat kFormats[] = {
        {GL_RGBA8, GL_UNSIGNED_BYTE, 4}, {GL_R16F, GL_FLOAT, 1},         {GL_RGBA16F, GL_FLOAT, 4},
        {GL_R32F, GL_FLOAT, 1},          {GL_RGBA32F, GL_FLOAT, 4},      {GL_R32I, GL_INT, 1},
        {GL_RGBA32I, GL_INT, 4},         {GL_R32UI, GL_UNSIGNED_INT, 1}, {GL_RGBA32UI, GL_UNSIGNED_INT, 4},
    };
    return kFormats[static_cast<int>(color)];
}

GLenum ColorFormat::transferFormat() const {
    if (isInteger())
        return channels == 1 ? GL_RED_INTEGER : GL_RGBA_INTEGER;
    return channels == 1 ? GL_RED : GL_RGBA;
}

GLenum colorAttachment(int color) {
    return GL_COLOR_ATTACHMENT0 + static_cast<GLenum>(color);
}

QString unknownFramebufferError() {
    return findCurrentContext()
               ? QStringLiteral(
                     "The framebuffer belongs to a context that does not share with the current one")
               : QStringLiteral("No OpenGL context is current");
}

GLName Framebuffer::Data::makeColor(const ContextGL& gl, GLenum format) const {
    if (samples > 0)
        return makeRenderbuffer(gl, format);
    GLName owned(GLKind::Texture, gl.group());
    GLuint name = 0;
    glGenTextures(1, &name);
    owned.set(name);
    if (name == 0)
        return owned;
    const ScopedTextureBinding binding(GL_TEXTURE_2D, name);
    glTexStorage2D(GL_TEXTURE_2D, 1, format, options.size.width(), options.size.height());
    // Textures of integers cannot be read with other filters.
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    return owned;
}

GLName Framebuffer::Data::makeRenderbuffer(const ContextGL& gl, GLenum format) const {
    GLName owned(GLKind::Renderbuffer, gl.group());
    GLuint name = 0;
    glGenRenderbuffers(1, &name);
    owned.set(name);
    if (name == 0)
        return owned;
    const ScopedRenderbufferBinding binding(name);
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, format, options.size.width(),
                                     options.size.height());
    return owned;
}

bool Framebuffer::Data::makeStorage(const ContextGL& gl) {
    group = gl.group();
    for (const Color color : qAsConst(options.colors)) {
        colors.push_back(makeColor(gl, ColorFormat::of(color).internalFormat));
        if (colors.back().value() == 0)
            return false;
    }
    if (options.depth == Depth::None)
        return true;
    depth = makeRenderbuffer(gl, GL_DEPTH_COMPONENT32F);
    return depth.value() != 0;
}

// A framebuffer with all attachments; its draw buffers are set by nameIn().
GLuint Framebuffer::Data::make(const ContextGL& gl) {
    GLName owned(GLKind::Framebuffer, gl.ownNameSpace());
    GLuint name = 0;
    glGenFramebuffers(1, &name);
    owned.set(name);
    if (name == 0)
        return 0;
    const ScopedFramebufferBinding binding(GL_DRAW_FRAMEBUFFER, name);
    for (std::size_t i = 0; i < colors.size(); ++i) {
        const GLenum attachment = colorAttachment(static_cast<int>(i));
        if (samples > 0)
            glFramebufferRenderbuffer(GL_DRAW_FRAMEBUFFER, attachment, GL_RENDERBUFFER, colors[i].value());
        else
            glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, attachment, GL_TEXTURE_2D, colors[i].value(), 0);
    }
    if (options.depth != Depth::None)
        glFramebufferRenderbuffer(GL_DRAW_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth.value());
    framebuffers.add({std::move(owned), -1});
    return name;
}

GLuint Framebuffer::Data::nameIn(const ContextGL& gl) {
    if (!group || group != gl.group())
        return 0;
    if (!framebuffers.find(*gl.ownNameSpace()) && make(gl) == 0)
        return 0;
    ContextFramebuffer& framebuffer = *framebuffers.find(*gl.ownNameSpace());
    const GLuint name = framebuffer.name.value();
    if (framebuffer.revision != revision) {
        const ScopedFramebufferBinding binding(GL_DRAW_FRAMEBUFFER, name);
        drawAsSet();
        if (!record.label().isEmpty())
            record.applyLabel(name);
        framebuffer.revision = revision;
    }
    return name;
}

GLuint Framebuffer::Data::nameInCurrentContext() {
    const ContextGL* gl = enterCurrentContext();
    return gl ? nameIn(*gl) : 0;
}

void Framebuffer::Data::drawOnly(int color) {
    const GLenum attachment = colorAttachment(color);
    glDrawBuffers(1, &attachment);
}

void Framebuffer::Data::drawAsSet() const {
    glDrawBuffers(static_cast<GLsizei>(drawn.size()), drawn.data());
}

void Framebuffer::Data::clearBound(int color, const QVector4D& value) const {
    const GLfloat floats[] = {value.x(), value.y(), value.z(), value.w()};
    constexpr GLint kZeros[4] = {};
    constexpr GLuint kUnsignedZeros[4] = {};
    drawOnly(color);
    if (format(color).type == GL_INT)
        glClearBufferiv(GL_COLOR, 0, kZeros);
    else if (format(color).type == GL_UNSIGNED_INT)
        glClearBufferuiv(GL_COLOR, 0, kUnsignedZeros);
    else
        glClearBufferfv(GL_COLOR, 0, floats);
    drawAsSet();
}

void Framebuffer::Data::copyColorInto(int color, const Data& target, int targetColor) const {
    const int width = options.size.width();
    const int height = options.size.height();
    glReadBuffer(colorAttachment(color));
    drawOnly(targetColor);
    glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    target.drawAsSet();
}

void Framebuffer::Data::copyDepths() const {
    const int width = options.size.width();
    const int height = options.size.height();
    glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_DEPTH_BUFFER_BIT, GL_NEAREST);
}

} // namespace Atelier::Vel
