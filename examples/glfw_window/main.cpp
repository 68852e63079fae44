// Shows an OBJ file with its textures in a window of GLFW.
// Usage: glfw_window MODEL.obj [PICTURE.png]     With a picture, it saves the first frame there and ends.
#include <epoxy/gl.h>

#include <cstdio>
#include <memory>

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>
#include <QtGui/QImage>
#include <QtGui/QMatrix4x4>

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>

#include <velgl/gpumodel.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/program.h>
#include <velmodel/objloader.h>

#include "shared/showmodel.h"

using namespace Atelier::Vel;

namespace {

/// What is drawn. It has to end before its context does.
class Scene {
public:
    bool load(const QString& path, QString& error) {
        _model = loadModelFromOBJFile(path, error, LoadOptions::forgiving());
        _program = Program::fromSource(shader(ShaderStage::Vertex, kVertexShader),
                                       shader(ShaderStage::Fragment, kFragmentShader), error);
        return _model && _program;
    }

    void draw(int width, int height, float angle) {
        glViewport(0, 0, width, height);
        glEnable(GL_DEPTH_TEST);
        glClearColor(0.15F, 0.16F, 0.18F, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        const QMatrix4x4 view = viewOf(_model->bounds(), float(width) / float(std::max(height, 1)), angle);
        _program->bind();
        _program->setUniform("viewProjection", view);
        _model->draw();
        _program->unbind();
    }

private:
    std::unique_ptr<GPUModel> _model;
    std::unique_ptr<Program> _program;
};

bool savePicture(int width, int height, const QString& path) {
    QImage picture(width, height, QImage::Format_RGBX8888);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, picture.bits());
    return picture.mirrored().save(path);
}

/// Returns: whether everything went well.
bool show(GLFWwindow* window, const QString& path, const QString& picture) {
    QString error;
    Scene scene;
    if (!scene.load(path, error)) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return false;
    }
    for (float angle = 30; glfwWindowShouldClose(window) == GLFW_FALSE; ++angle) {
        int width = 0;
        int height = 0;
        glfwGetFramebufferSize(window, &width, &height);
        scene.draw(width, height, angle);
        if (!picture.isEmpty())
            return savePicture(width, height, picture);
        glfwSwapBuffers(window);
        glfwPollEvents();
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv); // for the image formats that are plug-ins of Qt
    if (glfwInit() == GLFW_FALSE)
        return 1;
    glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, 4);
    glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, 3);
    glfwWindowHint(GLFW_OPENGL_PROFILE, GLFW_OPENGL_CORE_PROFILE);
    GLFWwindow* const window = glfwCreateWindow(800, 600, "VelModel in a window of GLFW", nullptr, nullptr);
    bool isShown = false;
    if (window != nullptr) {
        glfwMakeContextCurrent(window);
        isShown = show(window, application.arguments().value(1), application.arguments().value(2));
        OpenGLDeviceContext::forget(); // before a context that Qt does not know is destroyed
    }
    glfwTerminate();
    return isShown ? 0 : 1;
}
