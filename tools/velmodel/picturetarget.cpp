#include "framebuffer.h"

#include "picturetarget.h"

#include <algorithm>
#include <cmath>

#include <velgl/program.h>

#include "shaders.h"

namespace Atelier::Vel::Tool {

namespace {

constexpr int kSamples = 8;
const std::vector<GLenum> kColours = {GL_RGBA16F, GL_RGBA16F, GL_R16F};

int supportedSamples() {
    GLint ofTextures = 0;
    GLint ofDepthBuffers = 0;
    glGetIntegerv(GL_MAX_COLOR_TEXTURE_SAMPLES, &ofTextures);
    glGetIntegerv(GL_MAX_SAMPLES, &ofDepthBuffers);
    return std::clamp(std::min(ofTextures, ofDepthBuffers), 1, kSamples);
}

float linear(qreal encoded) {
    const double value = encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
    return static_cast<float>(value);
}

// A triangle that covers the viewport needs no buffers, but a core profile requires a vertex array.
void drawCoveringTriangle() {
    GLuint array = 0;
    glGenVertexArrays(1, &array);
    glBindVertexArray(array);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    glBindVertexArray(0);
    glDeleteVertexArrays(1, &array);
}

// Reads directly into the rows of the picture, without memory for the tile.
void readPixels(QSize size, QPoint topLeft, QImage& picture) {
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glPixelStorei(GL_PACK_ROW_LENGTH, picture.width());
    glReadPixels(0, 0, size.width(), size.height(), GL_RGBA, GL_UNSIGNED_BYTE,
                 picture.scanLine(topLeft.y()) + std::ptrdiff_t(topLeft.x()) * 4);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
}

} // namespace

struct PictureTarget::Data {
    Data(QSize size, int samples)
        : drawn({size, samples, kColours, true}),
          resolved({size, 0, kColours, false}),
          composed({size, 0, {GL_RGBA8}, false}) {}

    Framebuffer drawn;
    Framebuffer resolved;
    Framebuffer composed;
    std::unique_ptr<Program> composition;
};

PictureTarget::PictureTarget() = default;
PictureTarget::~PictureTarget() = default;

std::unique_ptr<PictureTarget> PictureTarget::create(QSize size, QString& error) {
    std::unique_ptr<PictureTarget> target(new PictureTarget);
    target->_data = std::make_unique<Data>(size, supportedSamples());
    const Data& data = *target->_data;
    if (!data.drawn.isComplete() || !data.resolved.isComplete() || !data.composed.isComplete()) {
        error =
            QStringLiteral("it cannot hold a picture of %1 x %2 pixels").arg(size.width()).arg(size.height());
        return nullptr;
    }
    target->_data->composition =
        Program::fromSource(kCoveringVertexShader, kCompositionFragmentShader, error);
    return target->_data->composition ? std::move(target) : nullptr;
}

QSize PictureTarget::size() const {
    return _data->composed.size();
}

void PictureTarget::beginOpaque() {
    _data->drawn.bind();
    constexpr GLenum kAll[] = {GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1, GL_COLOR_ATTACHMENT2};
    glDrawBuffers(3, kAll);
    constexpr GLfloat kNothing[] = {0, 0, 0, 0};
    constexpr GLfloat kAllShowsThrough[] = {1, 1, 1, 1};
    constexpr GLfloat kFar[] = {1};
    glDepthMask(GL_TRUE);
    glClearBufferfv(GL_COLOR, 0, kNothing);
    glClearBufferfv(GL_COLOR, 1, kNothing);
    glClearBufferfv(GL_COLOR, 2, kAllShowsThrough);
    glClearBufferfv(GL_DEPTH, 0, kFar);
    constexpr GLenum kOpaque[] = {GL_COLOR_ATTACHMENT0, GL_NONE, GL_NONE};
    glDrawBuffers(3, kOpaque);
    glEnable(GL_MULTISAMPLE);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDisable(GL_CULL_FACE);
    glDisable(GL_BLEND);
}

void PictureTarget::beginTransparent() {
    constexpr GLenum kTransparent[] = {GL_NONE, GL_COLOR_ATTACHMENT1, GL_COLOR_ATTACHMENT2};
    glDrawBuffers(3, kTransparent);
    glDepthMask(GL_FALSE);
    glEnable(GL_BLEND);
    glBlendFunci(1, GL_ONE, GL_ONE);
    glBlendFunci(2, GL_ZERO, GL_ONE_MINUS_SRC_COLOR);
}

void PictureTarget::finish(const QColor& background, QPoint topLeft, QImage& picture) {
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    _data->drawn.resolveInto(_data->resolved);
    _data->composed.bind();
    _data->composition->bind();
    for (int index = 0; index < 3; ++index) {
        glActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + index));
        glBindTexture(GL_TEXTURE_2D, _data->resolved.colour(index));
        glUniform1i(index, index);
    }
    const bool isVisible = background.isValid();
    glUniform4f(3, isVisible ? linear(background.redF()) : 0, isVisible ? linear(background.greenF()) : 0,
                isVisible ? linear(background.blueF()) : 0, isVisible ? 1 : 0);
    drawCoveringTriangle();
    _data->composition->unbind();
    readPixels(_data->composed.size(), topLeft, picture);
}

} // namespace Atelier::Vel::Tool
