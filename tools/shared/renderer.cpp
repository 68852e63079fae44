#include <epoxy/gl.h>

#include "renderer.h"

#include <algorithm>
#include <cmath>

#include <velgl/program.h>

#include "occlusion.h"

namespace Atelier::Vel::Tool {

namespace {

// The units before it are for the textures of materials.
constexpr int kOcclusionUnit = 15;

/// Queries whether any sample passes the depth test during its lifetime.
class VisibilityQuery {
public:
    VisibilityQuery() {
        glGenQueries(1, &_name);
        glBeginQuery(GL_ANY_SAMPLES_PASSED, _name);
    }
    ~VisibilityQuery() { glDeleteQueries(1, &_name); }
    VisibilityQuery(const VisibilityQuery&) = delete;
    VisibilityQuery& operator=(const VisibilityQuery&) = delete;

    bool end() const {
        glEndQuery(GL_ANY_SAMPLES_PASSED);
        GLuint result = 0;
        glGetQueryObjectuiv(_name, GL_QUERY_RESULT, &result);
        return result != 0;
    }

private:
    GLuint _name = 0;
};

QVector<QRect> tilesOf(const Scene& scene) {
    QVector<QRect> tiles;
    const QRect whole(QPoint(0, 0), scene.size);
    for (int y = 0; y < scene.size.height(); y += scene.tileSide)
        for (int x = 0; x < scene.size.width(); x += scene.tileSide)
            tiles.append(QRect(x, y, scene.tileSide, scene.tileSide) & whole);
    return tiles;
}

/// Parts of a length, as few as possible and all of one size. The last one may overlap the one before.
struct Parts {
    Parts(int allLength, int maxSize)
        : length(allLength), count((length + maxSize - 1) / maxSize), size((length + count - 1) / count) {}
    int begin(int part) const { return std::min(part * size, length - size); }

    int length;
    int count;
    int size;
};

// Tiles of one size, so that all of them, and all frames, share one target.
QVector<QRect> equalTilesOf(const Scene& scene) {
    const Parts columns(scene.size.width(), scene.tileSide);
    const Parts rows(scene.size.height(), scene.tileSide);
    QVector<QRect> tiles;
    for (int row = 0; row < rows.count; ++row)
        for (int column = 0; column < columns.count; ++column)
            tiles.append(QRect(columns.begin(column), rows.begin(row), columns.size, rows.size));
    return tiles;
}

bool isOccluded(const Scene& scene) {
    return scene.ambientOcclusion && !scene.wireframe;
}

void bindTexture(int unit, GLuint texture) {
    glActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + unit));
    glBindTexture(GL_TEXTURE_2D, texture);
    glActiveTexture(GL_TEXTURE0);
}

} // namespace

Renderer::Renderer() = default;
Renderer::~Renderer() = default;

std::unique_ptr<Renderer> Renderer::create(QString& error, const QString& materials) {
    std::unique_ptr<Renderer> renderer(new Renderer);
    renderer->_materials = materials;
    renderer->_program =
        Program::fromSource(modelVertexShader(materials), modelFragmentShader(materials), error);
    return renderer->_program ? std::move(renderer) : nullptr;
}

QImage Renderer::render(GPUModel& model, const Scene& scene, QString& error,
                        const DrawingProgress& progress) {
    QImage picture(scene.size, QImage::Format_RGBA8888);
    if (picture.isNull()) {
        error = QStringLiteral("there is no memory for the picture");
        return {};
    }
    _hasDrawn = false;
    _brightness = {};
    const QVector<QRect> tiles = tilesOf(scene);
    for (int number = 0; number < tiles.size(); ++number) {
        if (!drawTile(model, scene, tiles[number], picture, error))
            return {};
        if (progress)
            progress(number + 1, tiles.size());
    }
    return picture;
}

bool Renderer::drawTile(GPUModel& model, const Scene& scene, QRect tile, QImage& picture, QString& error) {
    PictureTarget* const target = targetOf(tile.size(), scene.samples, error);
    if (target == nullptr || (isOccluded(scene) && !computeOcclusion(model, scene, tile, error)))
        return false;
    const RenderState::Fill fill = scene.wireframe ? RenderState::Fill::Lines : RenderState::Fill::Solid;
    const VisibilityQuery visibility;
    target->beginOpaque(fill);
    draw(model, scene, tile, Pass::Opaque);
    target->beginTransparent(fill);
    draw(model, scene, tile, Pass::Transparent);
    _hasDrawn = visibility.end() || _hasDrawn;
    // Tiles are counted from the lower left, images from the upper left.
    const QRect written({tile.x(), picture.height() - tile.y() - tile.height()}, tile.size());
    if (!target->finish(scene.background, written.topLeft(), picture, error))
        return false;
    _brightness += brightnessOf(picture, written);
    if (scene.background.isValid())
        makeOpaque(picture, written);
    return true;
}

bool Renderer::present(GPUModel* model, const Scene& scene, unsigned int framebuffer, const Overlay& overlay,
                       QString& error) {
    const bool needsOcclusion = model != nullptr && isOccluded(scene);
    for (const QRect& tile : equalTilesOf(scene)) {
        PictureTarget* const target = targetOf(tile.size(), scene.samples, error);
        if (target == nullptr || (needsOcclusion && !computeOcclusion(*model, scene, tile, error)))
            return false;
        target->beginOpaque(RenderState::Fill::Solid);
        if (model != nullptr)
            draw(*model, scene, tile, Pass::Opaque);
        overlay(tileProjection(scene.camera.projection, scene.size, tile));
        target->beginTransparent(RenderState::Fill::Solid);
        if (model != nullptr)
            draw(*model, scene, tile, Pass::Transparent);
        if (!target->present(scene.background, tile.topLeft(), framebuffer, error))
            return false;
    }
    return true;
}

PictureTarget* Renderer::targetOf(QSize size, int samples, QString& error) {
    if (!_target)
        _target = PictureTarget::create(size, error, samples);
    else if ((_target->size() != size || _target->samples() != samples) &&
             !_target->resize(size, error, samples))
        _target.reset();
    return _target.get();
}

Occlusion* Renderer::occlusionOf(const Scene& scene, QString& error) {
    if (!_depthProgram)
        _depthProgram = Program::fromSource(modelVertexShader(_materials),
                                            modelFragmentShader(_materials, FragmentOutput::Depth), error);
    if (!_depthProgram)
        return nullptr;
    const QSize tileSize = scene.size.boundedTo({scene.tileSide, scene.tileSide});
    if (!_occlusion || _occlusion->pictureSize() != scene.size || _occlusion->tileSize() != tileSize) {
        _occlusion.reset(); // before the next one is allocated
        _occlusion = Occlusion::create(scene.size, tileSize, error);
    }
    return _occlusion.get();
}

// The tiles around are drawn as when it is their turn, so that all tiles see the same depths.
bool Renderer::computeOcclusion(GPUModel& model, const Scene& scene, QRect tile, QString& error) {
    Occlusion* const occlusion = occlusionOf(scene, error);
    if (occlusion == nullptr)
        return false;
    occlusion->begin(tile);
    for (const QRect& cell : tilesOf(scene)) {
        const QRect wanted = cell & occlusion->surroundings(tile);
        if (wanted.isEmpty())
            continue;
        occlusion->drawDepths(cell, wanted);
        draw(model, scene, cell, Pass::Depth);
        occlusion->takeDepths(cell, wanted);
    }
    return occlusion->compute(scene.camera.projection, error);
}

void Renderer::draw(GPUModel& model, const Scene& scene, QRect tile, Pass pass) {
    const Camera& camera = scene.camera;
    Program& program = pass == Pass::Depth ? *_depthProgram : *_program;
    program.setUniform("framing", QVector4D(camera.centre, camera.scale));
    program.setUniform("view", camera.view);
    program.setUniform("projection", tileProjection(camera.projection, scene.size, tile));
    if (pass != Pass::Depth)
        setLook(scene, pass);
    glVertexAttrib4f(kColourLocation, 1, 1, 1, 1); // which a model without colours has
    DrawOptions options;
    options.program = &program;
    options.filter = pass == Pass::Transparent ? scene.passes.transparent : scene.passes.opaque;
    model.draw(options);
    if (isOccluded(scene))
        bindTexture(kOcclusionUnit, 0);
}

void Renderer::setLook(const Scene& scene, Pass pass) {
    _program->setUniform("transparentPass", pass == Pass::Transparent ? 1 : 0);
    _program->setUniform("wireframe", scene.wireframe ? 1 : 0);
    _program->setUniform("colourReading", static_cast<int>(scene.colours));
    _program->setUniform("exposure", float(std::exp2(scene.exposure)));
    _program->setUniform("hasOcclusion", isOccluded(scene) ? 1 : 0);
    _program->setUniform("occlusion", kOcclusionUnit);
    if (isOccluded(scene))
        bindTexture(kOcclusionUnit, _occlusion->texture());
}

} // namespace Atelier::Vel::Tool
