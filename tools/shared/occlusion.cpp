#include <epoxy/gl.h>

#include "occlusion.h"

#include <algorithm>
#include <optional>

#include <velgl/framebuffer.h>
#include <velgl/program.h>
#include <velgl/renderstate.h>

#include "occlusionshaders.h"

namespace Atelier::Vel::Tool {

namespace {

using Color = Framebuffer::Color;
using Depth = Framebuffer::Depth;

// The radius is this part of the longer side of a picture, so that pictures of all sizes look the same.
constexpr int kRadiusPart = 24;
// The depths of one surface change by less within the reach of the blur, relative to the depth.
constexpr float kSurfaceStep = 0.01F;

int radiusOf(QSize picture) {
    return std::max(1, std::max(picture.width(), picture.height()) / kRadiusPart);
}

// The slopes at the pixels that the blur reads take one pixel more, which is within the radius.
int marginOf(QSize picture) {
    return radiusOf(picture) + kBlurReach;
}

QSize enlarged(QSize size, int margin) {
    return {size.width() + 2 * margin, size.height() + 2 * margin};
}

QVector2D vector(QPoint point) {
    return {float(point.x()), float(point.y())};
}

std::unique_ptr<Framebuffer> make(QSize size, Color color, Depth depth = Depth::None) {
    QString cause;
    return Framebuffer::create({size, 0, {color}, depth}, cause);
}

std::unique_ptr<Program> makeProgram(const QByteArray& fragmentShader, QString& error) {
    return Program::fromSource(Framebuffer::coveringVertexShader(), fragmentShader, error);
}

} // namespace

struct Occlusion::Data {
    QPoint firstDepth() const {
        const int margin = marginOf(picture);
        return tile.topLeft() - QPoint(margin, margin);
    }

    QSize picture;
    QRect tile;
    std::unique_ptr<Framebuffer> drawn;  // the depths of one cell
    std::unique_ptr<Framebuffer> depths; // those of the tile and around it
    std::unique_ptr<Framebuffer> light;
    std::unique_ptr<Framebuffer> blurred;
    std::unique_ptr<Program> occlusion;
    std::unique_ptr<Program> blur;
    std::optional<ScopedRenderState> state; // from drawDepths() to takeDepths()
};

Occlusion::Occlusion() : _data(std::make_unique<Data>()) {}
Occlusion::~Occlusion() = default;

std::unique_ptr<Occlusion> Occlusion::create(QSize picture, QSize tile, QString& error) {
    std::unique_ptr<Occlusion> result(new Occlusion);
    Data& data = *result->_data;
    data.picture = picture;
    data.drawn = make(tile, Color::R32F, Depth::Float32);
    data.depths = make(enlarged(tile, marginOf(picture)), Color::R32F);
    data.light = make(enlarged(tile, kBlurReach), Color::R16F);
    data.blurred = make(tile, Color::R16F);
    if (!data.drawn || !data.depths || !data.light || !data.blurred) {
        error = QStringLiteral("it cannot hold the ambient occlusion of %1 x %2 pixels")
                    .arg(tile.width())
                    .arg(tile.height());
        return nullptr;
    }
    data.occlusion = makeProgram(kOcclusionFragmentShader, error);
    data.blur = data.occlusion ? makeProgram(kOcclusionBlurFragmentShader, error) : nullptr;
    return data.blur ? std::move(result) : nullptr;
}

QSize Occlusion::pictureSize() const {
    return _data->picture;
}

QSize Occlusion::tileSize() const {
    return _data->blurred->size();
}

QRect Occlusion::surroundings(QRect tile) const {
    const int margin = marginOf(_data->picture);
    return tile.adjusted(-margin, -margin, margin, margin) & QRect(QPoint(0, 0), _data->picture);
}

void Occlusion::begin(QRect tile) {
    _data->tile = tile;
    _data->depths->clearColor(0, {kNoDepth, 0, 0, 0});
}

void Occlusion::drawDepths(QRect cell, QRect wanted) {
    _data->drawn->bind();
    _data->drawn->clear();
    _data->drawn->clearColor(0, {kNoDepth, 0, 0, 0});
    _data->state.emplace();
    glViewport(0, 0, cell.width(), cell.height());
    glEnable(GL_SCISSOR_TEST);
    glScissor(wanted.x() - cell.x(), wanted.y() - cell.y(), wanted.width(), wanted.height());
}

void Occlusion::takeDepths(QRect cell, QRect wanted) {
    _data->state.reset();
    _data->drawn->unbind();
    const QPoint from = wanted.topLeft() - cell.topLeft();
    const QPoint to = wanted.topLeft() - _data->firstDepth();
    glCopyImageSubData(_data->drawn->colorTexture(0), GL_TEXTURE_2D, 0, from.x(), from.y(), 0,
                       _data->depths->colorTexture(0), GL_TEXTURE_2D, 0, to.x(), to.y(), 0, wanted.width(),
                       wanted.height(), 1);
}

bool Occlusion::compute(const QMatrix4x4& projection, QString& error) {
    Program& occlusion = *_data->occlusion;
    occlusion.setUniform("depths", 0);
    occlusion.setUniform("firstDepth", vector(_data->firstDepth()));
    occlusion.setUniform("firstPixel", vector(_data->tile.topLeft() - QPoint(kBlurReach, kBlurReach)));
    occlusion.setUniform("pictureSize",
                         QVector2D(float(_data->picture.width()), float(_data->picture.height())));
    occlusion.setUniform("projection", projection);
    occlusion.setUniform("radius", radiusOf(_data->picture));
    Program& blur = *_data->blur;
    blur.setUniform("depths", 0);
    blur.setUniform("light", 1);
    blur.setUniform("firstDepth", vector(_data->firstDepth()));
    blur.setUniform("firstPixel", vector(_data->tile.topLeft()));
    blur.setUniform("largestStep", kSurfaceStep);
    return _data->light->paint(occlusion, {{_data->depths.get(), 0}}, error) &&
           _data->blurred->paint(blur, {{_data->depths.get(), 0}, {_data->light.get(), 0}}, error);
}

unsigned int Occlusion::texture() const {
    return _data->blurred->colorTexture(0);
}

} // namespace Atelier::Vel::Tool
