#include "canvas.h"

#include <algorithm>
#include <utility>

#include <QtCore/QDebug>
#include <QtGui/QMatrix4x4>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>

#include <velmodel/modelfiles.h>
#include <velmodel/objloader.h>
#include <velmodel/textureloader.h>

#include "shared/showmodel.h"

using namespace Atelier::Vel;

Canvas::~Canvas() {
    makeCurrent();
    _shown.clear();
    _program.reset();
}

void Canvas::add(const QString& path) {
    _shown.emplace_back();
    _shown.back().path = path;
    update();
}

void Canvas::reload() {
    for (Shown& shown : _shown)
        shown.needsLoad = true;
    update();
}

// Called for each new context. The program is shared.
void Canvas::initializeGL() {
    QString error;
    if (!_program)
        _program = Program::fromSource(shader(ShaderStage::Vertex, kVertexShader),
                                       shader(ShaderStage::Fragment, kFragmentShader), error);
    if (!_program)
        qFatal("%s", qPrintable(error));
}

void Canvas::load(Shown& shown) {
    QString error;
    shown.model = loadModelFromOBJFile(shown.path, error, LoadOptions::forgiving());
    if (shown.model)
        shown.model->setTextureLoader(makeTextureLoader(ModelFiles())); // textures that end with the model
    else
        qCritical() << error;
}

void Canvas::paintGL() {
    for (Shown& shown : _shown)
        if (std::exchange(shown.needsLoad, false))
            load(shown);
    QOpenGLFunctions* const gl = context()->functions();
    gl->glEnable(GL_DEPTH_TEST);
    gl->glClearColor(0.15F, 0.16F, 0.18F, 1);
    gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    // The viewports follow the size of the widget, in pixels.
    const QSize pixels = size() * devicePixelRatio();
    const int width = pixels.width() / std::max(int(_shown.size()), 1);
    int x = 0;
    for (const Shown& shown : _shown) {
        if (shown.model)
            draw(*shown.model, {x, 0, width, pixels.height()});
        x += width;
    }
}

void Canvas::draw(GPUModel& model, const QRect& viewport) {
    QOpenGLFunctions* const gl = context()->functions();
    gl->glViewport(viewport.x(), viewport.y(), viewport.width(), viewport.height());
    const float aspect = float(viewport.width()) / float(std::max(viewport.height(), 1));
    const QMatrix4x4 view = viewOf(model.bounds(), aspect, 30);
    _program->bind();
    _program->setUniform("viewProjection", view);
    model.draw();
    _program->unbind();
}
