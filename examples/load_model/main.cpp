// Loads an OBJ file onto the GPU without a display, and prints a summary.
#include <QtCore/QCoreApplication>
#include <QtCore/QDebug>

#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/opengldevicecontext.h>
#include <velmodel/objloader.h>

using namespace Atelier::Vel;

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QString error;
    const auto context = OpenGLDeviceContext::createHeadless({}, error);
    if (!context || !context->makeCurrent()) {
        qCritical() << error;
        return 1;
    }
    const std::unique_ptr<GPUModel> model(loadModelFromOBJFile(application.arguments().value(1), error));
    if (!model) {
        qCritical() << error;
        return 1;
    }
    for (int i = 0; i < model->drawableCount(); ++i)
        qInfo("%d triangles, %u vertices, %d materials", model->drawable(i)->indexCount() / 3,
              model->drawable(i)->vertexCount(), model->drawable(i)->drawElementsIndirectCommands().size());
}
