// Shows an OBJ file in a Qt window, and selects the material that is clicked.
// Usage: picking MODEL.obj [PICTURE.png X Y]     With a picture, it clicks at X Y, saves the next frame and
// ends.
#include <memory>

#include <QtCore/QDebug>
#include <QtGui/QGuiApplication>
#include <QtGui/QMatrix4x4>
#include <QtGui/QMouseEvent>
#include <QtGui/QOpenGLFunctions>
#include <QtGui/QOpenGLWindow>

#include <velgl/gpumodel.h>
#include <velgl/program.h>
#include <velmodel/objloader.h>
#include <velmodel/picking.h>

#include "shared/showmodel.h"

using namespace Atelier::Vel;

namespace {

constexpr char kSelectionShader[] = R"(
flat in int command;
uniform int selectedCommand;
out vec4 colour;
void main() {
    colour = vec4(command == selectedCommand ? vec3(1.0, 0.6, 0.0) : 0.8 * velglMaterial(command).Kd, 1.0);
})";

class Viewer : public QOpenGLWindow {
public:
    Viewer(QString path, QString picture, QPointF click)
        : _path(std::move(path)), _picture(std::move(picture)), _click(click) {
        resize(800, 600);
        setTitle(_path);
    }

    ~Viewer() override {
        makeCurrent();
        _model.reset();
        _program.reset();
    }

protected:
    void initializeGL() override {
        QString error;
        const DrawData data = readDrawDataFromOBJFile(_path, error, {}, nullptr, LoadOptions::forgiving());
        _picker = ModelPicker(data);
        _model = std::make_unique<GPUModel>();
        UploadOptions options;
        options.instance = makeIdentityInstance();
        if (upload(data, *_model, options))
            _program = Program::fromSource(shader(ShaderStage::Vertex, kVertexShader),
                                           shader(ShaderStage::Fragment, kSelectionShader), error);
        if (!_program) {
            qCritical() << error;
            QCoreApplication::exit(1);
        }
    }

    void mousePressEvent(QMouseEvent* event) override {
        const auto hit = _picker.pick(PickRay::through(event->localPos(), size(), _view));
        _selected = hit ? hit->command : -1;
        if (hit)
            qInfo() << "Hit" << _model->materialName(hit->drawable, hit->command) << "at" << hit->point;
        update();
    }

    void paintGL() override {
        if (!_program)
            return;
        const bool isClicked = !_picture.isEmpty() && !_view.isIdentity();
        if (isClicked)
            click();
        draw();
        if (isClicked)
            QCoreApplication::exit(grabFramebuffer().save(_picture) ? 0 : 1);
        else if (!_picture.isEmpty())
            update();
    }

private:
    void click() {
        QMouseEvent press(QEvent::MouseButtonPress, _click, Qt::LeftButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(this, &press);
    }

    void draw() {
        QOpenGLFunctions* const gl = context()->functions();
        gl->glEnable(GL_DEPTH_TEST);
        gl->glClearColor(0.15F, 0.16F, 0.18F, 1);
        gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        _view = viewOf(_model->bounds(), float(width()) / float(std::max(height(), 1)), 30);
        _program->bind();
        _program->setUniform("viewProjection", _view);
        _program->setUniform("selectedCommand", _selected);
        _model->draw();
        _program->unbind();
    }

    QString _path;
    QString _picture;
    QPointF _click;
    ModelPicker _picker;
    std::unique_ptr<GPUModel> _model;
    std::unique_ptr<Program> _program;
    QMatrix4x4 _view; // of the last frame
    int _selected = -1;
};

} // namespace

int main(int argc, char** argv) {
    useOpenGL43();
    const QGuiApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    Viewer viewer(arguments.value(1), arguments.value(2),
                  {arguments.value(3).toDouble(), arguments.value(4).toDouble()});
    viewer.show();
    return QGuiApplication::exec();
}
