// Shows an OBJ file with its textures in a Qt window that draws with its own shaders.
// Usage: qt_window MODEL.obj [PICTURE.png]     With a picture, it saves the first frame there and ends.
#include <memory>

#include <QtCore/QDebug>
#include <QtGui/QGuiApplication>
#include <QtGui/QMatrix4x4>
#include <QtGui/QOpenGLFunctions>
#include <QtGui/QOpenGLWindow>

#include <velgl/gpumodel.h>
#include <velgl/program.h>
#include <velgl/shaderinterface.h>
#include <velmodel/objloader.h>

using namespace Atelier::Vel;

namespace {

constexpr char kVertexShader[] = R"(
in vec3 va_Vertex;
in vec3 va_Normal;
in vec2 va_TexCoord;
uniform mat4 viewProjection;
out vec3 normal;
out vec2 texCoord;
flat out int command;
void main() {
    normal = va_Normal;
    texCoord = va_TexCoord;
    command = velglCommand();
    gl_Position = viewProjection * vec4(va_Vertex, 1.0);
})";

// Normals made by the library point inwards, those of files outwards: both sides are lit.
constexpr char kFragmentShader[] = R"(
in vec3 normal;
in vec2 texCoord;
flat in int command;
out vec4 colour;
void main() {
    vec4 texel = velglHas_map_Kd() ? texture(velgl_map_Kd, texCoord) : vec4(1.0);
    if (texel.a < 0.5)
        discard;
    float light = 0.2 + 0.8 * abs(dot(normalize(normal), normalize(vec3(1.0, 2.0, 3.0))));
    colour = vec4(velglMaterial(command).Kd * texel.rgb * light, 1.0);
})";

QByteArray shader(ShaderStage stage, const char* body) {
    return "#version 430 core\n" + shaderInterface(stage, {"OBJMaterial", "InstanceInfo"}) + body;
}

/// Turns about the model at a distance that shows all of it.
QMatrix4x4 viewOf(const GPUModel::Bounds& bounds, float aspect, float angle) {
    const QVector3D centre = (bounds.minimum + bounds.maximum) / 2;
    const float radius = std::max((bounds.maximum - bounds.minimum).length() / 2, 1e-6F);
    QMatrix4x4 view;
    view.perspective(40, aspect, radius, 5 * radius);
    view.translate(0, 0, -3 * radius);
    view.rotate(25, 1, 0, 0);
    view.rotate(angle, 0, 1, 0);
    view.translate(-centre);
    return view;
}

class Viewer : public QOpenGLWindow {
public:
    Viewer(QString path, QString picture) : _path(std::move(path)), _picture(std::move(picture)) {
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
        _model = loadModelFromOBJFile(_path, error, LoadOptions::forgiving());
        if (_model)
            _program = Program::fromSource(shader(ShaderStage::Vertex, kVertexShader),
                                           shader(ShaderStage::Fragment, kFragmentShader), error);
        if (!_program) {
            qCritical() << error;
            QCoreApplication::exit(1);
        }
    }

    void paintGL() override {
        if (!_program)
            return;
        QOpenGLFunctions* const gl = context()->functions();
        gl->glEnable(GL_DEPTH_TEST);
        gl->glClearColor(0.15F, 0.16F, 0.18F, 1);
        gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        const float aspect = float(width()) / float(std::max(height(), 1));
        const QMatrix4x4 view = viewOf(_model->bounds(), aspect, _angle++);
        _program->bind();
        gl->glUniformMatrix4fv(_program->uniformLocation("viewProjection"), 1, GL_FALSE, view.constData());
        _model->draw();
        _program->unbind();
        if (_picture.isEmpty())
            update();
        else
            save();
    }

private:
    void save() { QCoreApplication::exit(grabFramebuffer().save(_picture) ? 0 : 1); }

    QString _path;
    QString _picture;
    std::unique_ptr<GPUModel> _model;
    std::unique_ptr<Program> _program;
    float _angle = 30;
};

} // namespace

int main(int argc, char** argv) {
    QSurfaceFormat format;
    format.setVersion(4, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setDepthBufferSize(24);
    QSurfaceFormat::setDefaultFormat(format);
    const QGuiApplication application(argc, argv);
    Viewer viewer(application.arguments().value(1), application.arguments().value(2));
    viewer.show();
    return QGuiApplication::exec();
}
