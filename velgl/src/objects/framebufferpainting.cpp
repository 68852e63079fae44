#include "state/drawstate.h"

#include <velgl/program.h>
#include <velgl/renderstate.h>

#include "context/currentcontext.h"
#include "objects/framebufferdata.h"

namespace Atelier::Vel {

namespace {

using Data = FramebufferAccess::Data;

QString fault(const Data& source, const Data& target) {
    if (source.options.size != target.options.size)
        return QStringLiteral("The framebuffers have different sizes");
    if (source.options.colors != target.options.colors)
        return QStringLiteral("The framebuffers have different colours");
    if (target.samples > 0)
        return QStringLiteral("The target is multisampled");
    return {};
}

// Finds the textures of the inputs, in order. Returns: the cause, if there is one without.
QString findTextures(const Framebuffer& painted, const QVector<Framebuffer::Input>& inputs,
                     std::vector<GLuint>& textures) {
    if (inputs.size() > int(DrawState::kMaxUnits))
        return QStringLiteral("%1 inputs are more than %2").arg(inputs.size()).arg(DrawState::kMaxUnits);
    for (const Framebuffer::Input& input : inputs) {
        if (input.framebuffer == &painted)
            return QStringLiteral("A framebuffer cannot be painted from itself");
        textures.push_back(input.framebuffer ? input.framebuffer->colorTexture(input.color) : 0);
        if (textures.back() == 0)
            return QStringLiteral("Input %1 has no texture in the current context").arg(textures.size() - 1);
    }
    return {};
}

// A triangle needs no streams, but a core profile requires a vertex array.
void drawCoveringTriangle() {
    GLuint array = 0;
    glGenVertexArrays(1, &array);
    glBindVertexArray(array);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    glBindVertexArray(0);
    glDeleteVertexArrays(1, &array);
}

} // namespace

bool Framebuffer::resolveInto(Framebuffer& target, QString& error) const {
    const GLuint name = _data->nameInCurrentContext();
    const GLuint targetName = target._data->nameInCurrentContext();
    const QString cause =
        name == 0 || targetName == 0 ? unknownFramebufferError() : fault(*_data, *target._data);
    if (!cause.isNull()) {
        error = cause;
        return false;
    }
    const ScopedRenderState state; // the scissor test limits copies
    const ScopedFramebufferBinding source(GL_READ_FRAMEBUFFER, name);
    const ScopedFramebufferBinding binding(GL_DRAW_FRAMEBUFFER, targetName);
    for (int color = 0; color < _data->options.colors.size(); ++color)
        _data->copyColorInto(color, *target._data, color);
    if (_data->options.depth != Depth::None && target._data->options.depth != Depth::None)
        _data->copyDepths();
    return true;
}

bool Framebuffer::paint(const Program& program, const QVector<Input>& inputs, QString& error) {
    const ContextGL* gl = enterCurrentContext();
    std::vector<GLuint> textures;
    QString cause;
    if (!gl || _data->nameIn(*gl) == 0)
        cause = unknownFramebufferError();
    else if (program.name() == 0)
        cause = QStringLiteral("The current context does not know the program");
    else
        cause = findTextures(*this, inputs, textures);
    if (!cause.isNull()) {
        error = cause;
        return false;
    }
    RenderState plain;
    plain.depthTest = RenderState::DepthTest::Off;
    const ScopedRenderState renderState(plain);
    const auto count = static_cast<GLuint>(textures.size());
    DrawState state(StatePolicy::Restored, program.name(), {0, count}, gl->features().multiBind);
    state.bindTextures(textures.data(), count);
    bind();
    drawCoveringTriangle();
    unbind();
    return true;
}

} // namespace Atelier::Vel
