#include <epoxy/gl.h>

#include "picturetarget.h"

#include <cmath>
#include <optional>

#include <velgl/framebuffer.h>
#include <velgl/program.h>

#include "shaders.h"

namespace Atelier::Vel::Tool {

namespace {

constexpr int kLayers = 3;

std::unique_ptr<Framebuffer> makeLayers(QSize size, int samples, Framebuffer::Depth depth) {
    QString cause;
    return Framebuffer::create(
        {size,
         samples,
         {Framebuffer::Color::RGBA16F, Framebuffer::Color::RGBA16F, Framebuffer::Color::R16F},
         depth},
        cause);
}

std::unique_ptr<Framebuffer> makeComposed(QSize size) {
    QString cause;
    return Framebuffer::create({size, 0, {Framebuffer::Color::RGBA8}, Framebuffer::Depth::None}, cause);
}

float linear(qreal encoded) {
    const double value = encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
    return static_cast<float>(value);
}

QVector4D visibleColour(const QColor& background) {
    if (!background.isValid())
        return {};
    return {linear(background.redF()), linear(background.greenF()), linear(background.blueF()), 1};
}

} // namespace

struct PictureTarget::Data {
    std::unique_ptr<Framebuffer> drawn;
    std::unique_ptr<Framebuffer> resolved;
    std::unique_ptr<Framebuffer> composed;
    std::unique_ptr<Program> composition;
    std::optional<ScopedRenderState> state; // from beginOpaque() to finish()
};

PictureTarget::PictureTarget() : _data(std::make_unique<Data>()) {}
PictureTarget::~PictureTarget() = default;

std::unique_ptr<PictureTarget> PictureTarget::create(QSize size, QString& error, int samples) {
    std::unique_ptr<PictureTarget> target(new PictureTarget);
    if (!target->resize(size, error, samples))
        return nullptr;
    target->_data->composition =
        Program::fromSource(Framebuffer::coveringVertexShader(), kCompositionFragmentShader, error);
    return target->_data->composition ? std::move(target) : nullptr;
}

bool PictureTarget::resize(QSize size, QString& error, int samples) {
    Data& data = *_data;
    for (std::unique_ptr<Framebuffer>* const framebuffer : {&data.drawn, &data.resolved, &data.composed})
        framebuffer->reset(); // before the next ones are allocated
    data.drawn = makeLayers(size, samples, Framebuffer::Depth::Float32);
    data.resolved = makeLayers(size, 0, Framebuffer::Depth::None);
    data.composed = makeComposed(size);
    if (data.drawn && data.resolved && data.composed)
        return true;
    error = QStringLiteral("it cannot hold a picture of %1 x %2 pixels").arg(size.width()).arg(size.height());
    return false;
}

QSize PictureTarget::size() const {
    return _data->composed->size();
}

int PictureTarget::samples() const {
    return _data->drawn->options().samples;
}

void PictureTarget::beginOpaque(RenderState::Fill fill) {
    Framebuffer& drawn = *_data->drawn;
    drawn.bind();
    drawn.clear();
    drawn.clearColor(2, {1, 1, 1, 1}); // all shows through
    drawn.setDrawnColors({0});
    RenderState state;
    state.fill = fill;
    _data->state.emplace(state);
}

void PictureTarget::beginTransparent(RenderState::Fill fill) {
    _data->drawn->setDrawnColors({1, 2});
    RenderState state;
    state.fill = fill;
    state.writesDepth = false;
    state.blends = {{},
                    {RenderState::Factor::One, RenderState::Factor::One},
                    {RenderState::Factor::Zero, RenderState::Factor::OneMinusSourceColor}};
    _data->state.reset();
    _data->state.emplace(state);
}

bool PictureTarget::compose(const QColor& background, QString& error) {
    _data->state.reset();
    _data->drawn->unbind();
    if (!_data->drawn->resolveInto(*_data->resolved, error))
        return false;
    Program& composition = *_data->composition;
    composition.setUniform("opaque", 0);
    composition.setUniform("weighted", 1);
    composition.setUniform("showsThrough", 2);
    composition.setUniform("background", visibleColour(background));
    QVector<Framebuffer::Input> layers;
    for (int layer = 0; layer < kLayers; ++layer)
        layers.append({_data->resolved.get(), layer});
    return _data->composed->paint(composition, layers, error);
}

bool PictureTarget::finish(const QColor& background, QPoint topLeft, QImage& picture, QString& error) {
    return compose(background, error) && _data->composed->readInto(picture, topLeft, error);
}

bool PictureTarget::present(const QColor& background, QPoint lowerLeft, unsigned int framebuffer,
                            QString& error) {
    if (!compose(background, error))
        return false;
    const QRect place(lowerLeft, size());
    _data->composed->bind();
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
    glBlitFramebuffer(0, 0, size().width(), size().height(), place.left(), place.top(), place.right() + 1,
                      place.bottom() + 1, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    _data->composed->unbind();
    return true;
}

} // namespace Atelier::Vel::Tool
