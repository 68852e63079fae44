#include "objects/framebufferdata.h"

#include <algorithm>

#include <velgl/renderstate.h>

#include "context/currentcontext.h"
#include "context/glerrors.h"

namespace Atelier::Vel {

namespace {

GLint limit(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

int largestSide() {
    GLint viewport[2] = {};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    return std::min({limit(GL_MAX_TEXTURE_SIZE), limit(GL_MAX_RENDERBUFFER_SIZE), viewport[0], viewport[1]});
}

bool hasIntegers(const Framebuffer::Options& options) {
    return std::any_of(options.colors.cbegin(), options.colors.cend(),
                       [](Framebuffer::Color color) { return ColorFormat::of(color).isInteger(); });
}

int supportedSamples(const Framebuffer::Options& options) {
    if (options.samples == 0)
        return 0;
    const int most = hasIntegers(options) ? std::min(limit(GL_MAX_SAMPLES), limit(GL_MAX_INTEGER_SAMPLES))
                                          : limit(GL_MAX_SAMPLES);
    return std::max(std::min(options.samples, most), 1);
}

// Returns: why OpenGL cannot make such a framebuffer; null if nothing is known.
QString fault(const Framebuffer::Options& options) {
    const int longest = std::max(options.size.width(), options.size.height());
    const int most = std::min(limit(GL_MAX_COLOR_ATTACHMENTS), limit(GL_MAX_DRAW_BUFFERS));
    if (options.size.isEmpty())
        return QStringLiteral("both sides must be at least 1");
    if (longest > largestSide())
        return QStringLiteral("the driver's largest side is %1").arg(largestSide());
    if (options.samples < 0)
        return QStringLiteral("it cannot have %1 samples").arg(options.samples);
    if (options.colors.isEmpty() && options.depth == Framebuffer::Depth::None)
        return QStringLiteral("it has neither colours nor depths");
    if (options.colors.size() > most)
        return QStringLiteral("%1 colours are more than the driver's %2")
            .arg(options.colors.size())
            .arg(most);
    return {};
}

// OpenGL may run out of memory at any step; the framebuffer is incomplete then.
QString refusal(GLuint name) {
    GLenum status = GL_FRAMEBUFFER_UNDEFINED;
    if (name != 0) {
        const ScopedFramebufferBinding binding(GL_DRAW_FRAMEBUFFER, name);
        status = glCheckFramebufferStatus(GL_DRAW_FRAMEBUFFER);
    }
    if (status == GL_FRAMEBUFFER_COMPLETE)
        return {};
    const QString errors = takeErrors();
    return errors.isEmpty() ? QStringLiteral("OpenGL refuses it with status 0x%1").arg(status, 4, 16)
                            : QStringLiteral("OpenGL reports %1").arg(errors);
}

} // namespace

Framebuffer::Framebuffer() : _data(std::make_unique<Data>()) {}

Framebuffer::~Framebuffer() = default;

std::unique_ptr<Framebuffer> Framebuffer::create(const Options& options, QString& error) {
    const ContextGL* gl = enterCurrentContext();
    if (!gl) {
        error = QStringLiteral("No OpenGL context is current");
        return nullptr;
    }
    std::unique_ptr<Framebuffer> framebuffer(new Framebuffer);
    Data& data = *framebuffer->_data;
    QString cause = fault(options);
    if (cause.isNull()) {
        data.options = options;
        data.samples = supportedSamples(options);
        for (int color = 0; color < options.colors.size(); ++color)
            data.drawn.push_back(colorAttachment(color));
        cause = refusal(data.makeStorage(*gl) ? data.nameIn(*gl) : 0);
    }
    if (cause.isNull())
        return framebuffer;
    error = QStringLiteral("A framebuffer of %1 x %2 pixels cannot be made: %3")
                .arg(options.size.width())
                .arg(options.size.height())
                .arg(cause);
    return nullptr;
}

const Framebuffer::Options& Framebuffer::options() const {
    return _data->options;
}

QSize Framebuffer::size() const {
    return _data->options.size;
}

int Framebuffer::samples() const {
    return _data->samples;
}

void Framebuffer::setLabel(const QString& label) {
    _data->record.setLabel(label);
    ++_data->revision;
}

bool Framebuffer::bind() {
    const GLuint name = _data->nameInCurrentContext();
    if (name == 0) {
        _data->bindings.push({});
        return false;
    }
    GLfloat viewport[4] = {};
    glGetFloati_v(GL_VIEWPORT, 0, viewport);
    _data->bindings.push({findCurrentContext()->serial(),
                          currentName(GL_DRAW_FRAMEBUFFER_BINDING),
                          currentName(GL_READ_FRAMEBUFFER_BINDING),
                          {viewport[0], viewport[1], viewport[2], viewport[3]}});
    glBindFramebuffer(GL_FRAMEBUFFER, name);
    glViewportIndexedf(0, 0, 0, static_cast<GLfloat>(size().width()), static_cast<GLfloat>(size().height()));
    return true;
}

void Framebuffer::unbind() {
    const SavedTarget saved = _data->bindings.pop();
    const ContextGL* gl = findKnownContext();
    if (!gl || gl->serial() != saved.context)
        return;
    rebindFramebuffer(GL_DRAW_FRAMEBUFFER, saved.drawn);
    rebindFramebuffer(GL_READ_FRAMEBUFFER, saved.read);
    glViewportIndexedf(0, saved.viewport.x(), saved.viewport.y(), saved.viewport.z(), saved.viewport.w());
}

void Framebuffer::setDrawnColors(const QVector<int>& colors) {
    for (int color = 0; color < _data->options.colors.size(); ++color)
        _data->drawn[static_cast<std::size_t>(color)] =
            colors.contains(color) ? colorAttachment(color) : GL_NONE;
    ++_data->revision;
    _data->nameInCurrentContext(); // a framebuffer that is bound draws into them at once
}

bool Framebuffer::clear(const QColor& color) {
    const GLuint name = _data->nameInCurrentContext();
    if (name == 0)
        return false;
    const QColor rgb = color.toRgb();
    const QVector4D value(float(rgb.redF()), float(rgb.greenF()), float(rgb.blueF()), float(rgb.alphaF()));
    const ScopedRenderState state; // the masks and the scissor test of the client would limit what is cleared
    const ScopedFramebufferBinding binding(GL_DRAW_FRAMEBUFFER, name);
    for (int index = 0; index < _data->options.colors.size(); ++index)
        _data->clearBound(index, value);
    constexpr GLfloat kFarthest = 1;
    if (_data->options.depth != Depth::None)
        glClearBufferfv(GL_DEPTH, 0, &kFarthest);
    return true;
}

bool Framebuffer::clearColor(int color, const QVector4D& value) {
    const GLuint name = _data->nameInCurrentContext();
    if (name == 0 || !_data->hasColor(color) || _data->format(color).isInteger())
        return false;
    const ScopedRenderState state;
    const ScopedFramebufferBinding binding(GL_DRAW_FRAMEBUFFER, name);
    _data->clearBound(color, value);
    return true;
}

unsigned int Framebuffer::name() const {
    return _data->nameInCurrentContext();
}

unsigned int Framebuffer::colorTexture(int color) const {
    const bool isTexture = _data->hasColor(color) && _data->samples == 0;
    return isTexture && _data->nameInCurrentContext() != 0
               ? _data->colors[static_cast<std::size_t>(color)].value()
               : 0;
}

QByteArray Framebuffer::coveringVertexShader() {
    return "#version 430 core\n"
           "void main() {\n"
           "    gl_Position = vec4(vec2((gl_VertexID << 1) & 2, gl_VertexID & 2) * 2.0 - 1.0, 0.0, 1.0);\n"
           "}\n";
}

} // namespace Atelier::Vel
