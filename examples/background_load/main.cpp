// Shows an OBJ file in a Qt window that responds while the file loads, and its textures are decoded, on
// another thread. The textures are then handed to OpenGL in portions, one for each frame. Usage:
// background_load MODEL.obj [PICTURE.png] [--cancel] Escape cancels the load, and so does closing the window.
// With a picture, it saves the first frame with all textures there and ends. --cancel presses Escape in the
// first frame.
#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include <QtCore/QDebug>
#include <QtGui/QGuiApplication>
#include <QtGui/QKeyEvent>
#include <QtGui/QMatrix4x4>
#include <QtGui/QOpenGLFunctions>
#include <QtGui/QOpenGLWindow>

#include <velgl/gpumodel.h>
#include <velgl/program.h>
#include <velmodel/decodedtextures.h>
#include <velmodel/drawdata.h>
#include <velmodel/objloader.h>

#include "backgroundload.h"
#include "shared/showmodel.h"

using namespace Atelier::Vel;

namespace {

class Viewer : public QOpenGLWindow {
public:
    Viewer(QString path, QString picture, bool cancels)
        : _path(std::move(path)), _picture(std::move(picture)), _cancels(cancels) {
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
        _program = Program::fromSource(shader(ShaderStage::Vertex, kVertexShader),
                                       shader(ShaderStage::Fragment, kFragmentShader), error);
        if (_program)
            _load = std::make_unique<BackgroundLoad>(_path);
        else
            fail(error);
    }

    void paintGL() override {
        if (_load && _load->isReady())
            finishLoad();
        if (_load)
            drawProgress();
        else if (_model)
            drawModel();
        update();
    }

    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Escape && _load)
            _load->cancel();
    }

private:
    static void fail(const QString& error) {
        qCritical() << error;
        QCoreApplication::exit(1);
    }

    // The upload needs the window's thread, where the context is current. The textures follow frame by frame.
    void finishLoad() {
        qInfo("Frames drawn while loading: %d", _frames);
        BackgroundLoad::Result result = _load->takeResult();
        _load.reset();
        auto model = std::make_unique<GPUModel>();
        if (!upload(std::move(result.data), *model, {makeIdentityInstance()})) {
            fail(result.error.isEmpty() ? QStringLiteral("No faces in '%1'").arg(_path) : result.error);
            return;
        }
        _textures = std::move(result.textures);
        model->setTextureLoader(_textures.loader());
        _model = std::move(model);
    }

    /// Draws a progress bar over a pulsating background.
    void drawProgress() {
        if (_cancels) {
            QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
            QCoreApplication::sendEvent(this, &escape);
        }
        const float done = _load->progressOfFrame();
        const QSize size = this->size() * devicePixelRatio();
        QOpenGLFunctions* const gl = context()->functions();
        const float blue = 0.3F + 0.1F * std::sin(0.1F * float(_frames++));
        gl->glClearColor(0.15F, 0.16F, blue, 1);
        gl->glClear(GL_COLOR_BUFFER_BIT);
        gl->glEnable(GL_SCISSOR_TEST);
        gl->glScissor(0, 0, int(float(size.width()) * done), size.height() / 20);
        gl->glClearColor(0.9F, 0.9F, 0.9F, 1);
        gl->glClear(GL_COLOR_BUFFER_BIT);
        gl->glDisable(GL_SCISSOR_TEST);
    }

    /// A texture that is not there yet is drawn white.
    void drawModel() {
        const bool hasAllTextures = _textures.waitingCount() == 0;
        QOpenGLFunctions* const gl = context()->functions();
        gl->glEnable(GL_DEPTH_TEST);
        gl->glClearColor(0.15F, 0.16F, 0.18F, 1);
        gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        const float aspect = float(width()) / float(std::max(height(), 1));
        const QMatrix4x4 view = viewOf(_model->bounds(), aspect, _angle++);
        _program->bind();
        _program->setUniform("viewProjection", view);
        _model->draw();
        _program->unbind();
        if (!hasAllTextures)
            handOverTextures();
        else if (!_picture.isEmpty())
            save();
    }

    void handOverTextures() {
        HandOverBudget budget;
        budget.images = 1;
        _textures.handOver(budget);
        ++_framesWithoutTextures;
    }

    void save() {
        qInfo("Frames drawn before all textures were there: %d", _framesWithoutTextures);
        QCoreApplication::exit(grabFramebuffer().save(_picture) ? 0 : 1);
    }

    QString _path;
    QString _picture;
    bool _cancels;
    int _frames = 0; // during the load
    int _framesWithoutTextures = 0;
    float _angle = 30;
    std::unique_ptr<BackgroundLoad> _load;
    DecodedTextures _textures;
    std::unique_ptr<GPUModel> _model;
    std::unique_ptr<Program> _program;
};

} // namespace

int main(int argc, char** argv) {
    useOpenGL43();
    const QGuiApplication application(argc, argv);
    QStringList arguments = application.arguments();
    const bool cancels = arguments.removeOne(QStringLiteral("--cancel"));
    Viewer viewer(arguments.value(1), arguments.value(2), cancels);
    viewer.show();
    return QGuiApplication::exec();
}
