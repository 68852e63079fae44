// Draws 10,000 tiles in one call, and turns one row of them in each frame.
// Usage: instances [PICTURE.png]     With a picture, it saves the frame after ten rows there and ends.
#include <memory>

#include <QtCore/QDebug>
#include <QtGui/QGuiApplication>
#include <QtGui/QMatrix4x4>
#include <QtGui/QOpenGLFunctions>
#include <QtGui/QOpenGLWindow>

#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/program.h>
#include <velgl/shaderinterface.h>
#include <velmodel/drawdata.h>
#include <velmodel/modelbuilder.h>

using namespace Atelier::Vel;

namespace {

constexpr int kSide = 100; // tiles in a row, and rows
constexpr int kRowsInPicture = 10;

constexpr char kVertexShader[] = R"(
in vec3 va_Vertex;
flat out int tile;
void main() {
    tile = velglInstanceNumber();
    gl_Position = velglInstance(tile).ModelMatrix * vec4(va_Vertex, 1.0);
})";

constexpr char kFragmentShader[] = R"(
flat in int tile;
out vec4 colour;
void main() {
    colour = vec4(float(tile % 100) / 99.0, float(tile / 100) / 99.0, 0.6, 1.0);
})";

QByteArray shader(ShaderStage stage, const char* body) {
    return "#version 430 core\n" + shaderInterface(stage, {"OBJMaterial", "InstanceInfo"}) + body;
}

/// A square from -1 to 1.
DrawData square() {
    constexpr unsigned int kFloat = 0x1406; // GL_FLOAT
    const float positions[] = {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0};
    const unsigned int corners[] = {0, 1, 2, 3};
    const unsigned int cornersPerFace[] = {4};
    const unsigned int faces[] = {0};
    ModelBuilder builder;
    builder.createVertexAttribute("va_Vertex", 3, kFloat, 0, 0);
    builder.addValuesToVertexAttribute("va_Vertex", 12, positions, kFloat);
    builder.addIndicesToVertexAttribute("va_Vertex", 4, corners);
    builder.addVertexCountsToFaces(1, cornersPerFace);
    builder.createMaterialGroup("tile", InstanceData("OBJMaterial"), -1, 0);
    builder.addFacesToMaterialGroup("tile", 1, faces, "tile");
    return builder.prepare("va_Vertex");
}

/// A tile at its place in the window, turned by `angle` degrees.
InstanceData tile(int number, float angle) {
    const float cell = 2.0F / kSide;
    QMatrix4x4 matrix;
    matrix.translate(cell * (float(number % kSide) + 0.5F) - 1, cell * (float(number / kSide) + 0.5F) - 1);
    matrix.rotate(angle, 0, 0, 1);
    matrix.scale(0.4F * cell);
    InstanceData instance("InstanceInfo");
    instance.set("ModelMatrix", matrix.constData(), 16 * sizeof(float));
    return instance;
}

class Viewer : public QOpenGLWindow {
public:
    explicit Viewer(QString picture) : _picture(std::move(picture)) {
        resize(800, 800);
        setTitle("10,000 tiles in one call");
    }

    ~Viewer() override {
        makeCurrent();
        _model.clear();
        _program.reset();
    }

protected:
    void initializeGL() override {
        QString error;
        UploadOptions options;
        for (int number = 0; number < kSide * kSide; ++number)
            options.instances.append(tile(number, 0));
        _program = Program::fromSource(shader(ShaderStage::Vertex, kVertexShader),
                                       shader(ShaderStage::Fragment, kFragmentShader), error);
        if (!_program || !upload(square(), _model, options)) {
            qCritical() << "The tiles cannot be drawn:" << error;
            QCoreApplication::exit(1);
        }
    }

    void paintGL() override {
        if (!_program || _model.drawableCount() == 0)
            return;
        QOpenGLFunctions* const gl = context()->functions();
        gl->glClearColor(0.15F, 0.16F, 0.18F, 1);
        gl->glClear(GL_COLOR_BUFFER_BIT);
        DrawOptions drawing;
        drawing.program = _program.get();
        _model.draw(drawing);
        if (!_picture.isEmpty() && _frame == kRowsInPicture)
            save();
        else
            turnNextRow();
        update();
    }

private:
    /// The next draw uploads these hundred matrices, and no others.
    void turnNextRow() {
        const int row = _frame % kSide;
        const float angle = 45 * float(_frame / kSide + 1);
        for (int number = row * kSide; number < (row + 1) * kSide; ++number)
            _model.instances(0)->set(number, tile(number, angle));
        ++_frame;
    }
    void save() { QCoreApplication::exit(grabFramebuffer().save(_picture) ? 0 : 1); }

    QString _picture;
    GPUModel _model;
    std::unique_ptr<Program> _program;
    int _frame = 0;
};

} // namespace

int main(int argc, char** argv) {
    QSurfaceFormat format;
    format.setVersion(4, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    QSurfaceFormat::setDefaultFormat(format);
    const QGuiApplication application(argc, argv);
    Viewer viewer(application.arguments().value(1));
    viewer.show();
    return QGuiApplication::exec();
}
