#include <epoxy/gl.h>

#include "renderer.h"

#include <velgl/program.h>

#include "picturetarget.h"
#include "shaders.h"

namespace Atelier::Vel::Tool {

namespace {

// Limits the GPU memory of a picture of any size to about 300 MB.
constexpr int kTileSide = 2048;

// The locations of the uniforms in the shaders.
enum Uniform { kFraming, kView, kProjection, kTransparentPass, kWireframe };

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

QVector<QRect> tilesOf(QSize size) {
    QVector<QRect> tiles;
    const QRect whole(QPoint(0, 0), size);
    for (int y = 0; y < size.height(); y += kTileSide)
        for (int x = 0; x < size.width(); x += kTileSide)
            tiles.append(QRect(x, y, kTileSide, kTileSide) & whole);
    return tiles;
}

} // namespace

Renderer::Renderer() = default;
Renderer::~Renderer() = default;

std::unique_ptr<Renderer> Renderer::create(QString& error, const QString& materials) {
    std::unique_ptr<Renderer> renderer(new Renderer);
    renderer->_program =
        Program::fromSource(modelVertexShader(materials), modelFragmentShader(materials), error);
    return renderer->_program ? std::move(renderer) : nullptr;
}

QImage Renderer::render(GPUModel& model, const Scene& scene, QString& error) {
    QImage picture(scene.size, QImage::Format_RGBA8888);
    if (picture.isNull()) {
        error = QStringLiteral("there is no memory for the picture");
        return {};
    }
    _hasDrawn = false;
    for (const QRect& tile : tilesOf(scene.size)) {
        PictureTarget* target = targetOf(tile.size(), error);
        if (target == nullptr)
            return {};
        const VisibilityQuery visibility;
        target->beginOpaque();
        draw(model, scene, tile, Pass::Opaque);
        target->beginTransparent();
        draw(model, scene, tile, Pass::Transparent);
        _hasDrawn = visibility.end() || _hasDrawn;
        // Tiles are counted from the lower left, images from the upper left.
        const int top = picture.height() - tile.y() - tile.height();
        target->finish(scene.background, {tile.x(), top}, picture);
    }
    return picture;
}

PictureTarget* Renderer::targetOf(QSize size, QString& error) {
    if (!_target || _target->size() != size) {
        _target.reset(); // before the next one is allocated
        _target = PictureTarget::create(size, error);
    }
    return _target.get();
}

void Renderer::draw(GPUModel& model, const Scene& scene, QRect tile, Pass pass) {
    const Camera& camera = scene.camera;
    const QMatrix4x4 projection = tileProjection(camera.projection, scene.size, tile);
    _program->bind();
    glVertexAttrib4f(kColourLocation, 1, 1, 1, 1); // which a model without colours has
    glUniform4f(kFraming, camera.centre.x(), camera.centre.y(), camera.centre.z(), camera.scale);
    glUniformMatrix4fv(kView, 1, GL_FALSE, camera.view.constData());
    glUniformMatrix4fv(kProjection, 1, GL_FALSE, projection.constData());
    glUniform1i(kTransparentPass, pass == Pass::Transparent ? 1 : 0);
    glUniform1i(kWireframe, scene.wireframe ? 1 : 0);
    glPolygonMode(GL_FRONT_AND_BACK, scene.wireframe ? GL_LINE : GL_FILL);
    DrawOptions options;
    options.filter = pass == Pass::Opaque ? scene.passes.opaque : scene.passes.transparent;
    model.draw(options);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    _program->unbind();
}

} // namespace Atelier::Vel::Tool
