// Draws a small picture of an OBJ file without a display, and without OpenGL calls of its own.
// Usage: thumbnail MODEL.obj PICTURE.png [SIDE]
#include <algorithm>

#include <QtCore/QCoreApplication>
#include <QtCore/QDebug>

#include <velgl/autobinder.h>
#include <velgl/framebuffer.h>
#include <velgl/gpumodel.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/program.h>
#include <velgl/renderstate.h>
#include <velgl/shaderinterface.h>
#include <velmodel/objloader.h>

using namespace Atelier::Vel;

namespace {

const QColor kBackground(38, 41, 46);

QMatrix4x4 viewOf(const GPUModel::Bounds& bounds) {
    const float radius = std::max((bounds.maximum - bounds.minimum).length() / 2, 1e-6F);
    QMatrix4x4 view;
    view.perspective(40, 1, radius, 5 * radius);
    view.translate(0, 0, -3 * radius);
    view.rotate(25, 1, 0, 0);
    view.rotate(-30, 0, 1, 0);
    view.translate((bounds.minimum + bounds.maximum) / -2);
    return view;
}

QImage drawn(GPUModel& model, int side, QString& error) {
    const auto program = Program::fromFiles(SHADER_FOLDER "/thumbnail.vert", SHADER_FOLDER "/thumbnail.frag",
                                            {"OBJMaterial", "InstanceInfo"}, error);
    Framebuffer::Options options;
    options.size = {side, side};
    options.samples = 4;
    const auto picture = Framebuffer::create(options, error);
    if (!program || !picture)
        return {};
    program->setUniform("viewProjection", viewOf(model.bounds()));
    program->setUniform("light", QVector3D(1, 2, 3));

    picture->clear(kBackground);
    {
        const AutoBinder target(picture.get());
        const ScopedRenderState state; // near surfaces hide far ones
        DrawOptions draw;
        draw.program = program.get();
        model.draw(draw);
    }
    return picture->toImage(error);
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    QString error;
    const auto context = OpenGLDeviceContext::createHeadless({}, error);
    if (!context || !context->makeCurrent()) {
        qCritical() << error;
        return 1;
    }
    const auto model = loadModelFromOBJFile(arguments.value(1), error, LoadOptions::forgiving());
    const QImage picture = model ? drawn(*model, arguments.value(3, "128").toInt(), error) : QImage();
    if (picture.isNull())
        qCritical() << error;
    return picture.save(arguments.value(2)) ? 0 : 1;
}
