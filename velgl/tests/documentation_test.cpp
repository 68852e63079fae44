#include <velgl/autobinder.h>
#include <velgl/gpumodel.h>
#include <velgl/program.h>
#include <velgl/shaderinterface.h>

#include "support/glfixture.h"
#include "testscene.h"

// The code in docs/velgl.md stands in these tests.
namespace Atelier::Vel::Testing {

TEST(DocumentationTest, ProgramInTheDocumentationDraws) {
    registerTestPlans();

    QString error;
    const auto context = OpenGLDeviceContext::createHeadless({}, error);
    if (!context || !context->makeCurrent())
        qFatal("%s", qPrintable(error));

    const ShaderPlans plans{QStringLiteral("TestMaterial"), QStringLiteral("TestInstance")};
    const QByteArray version = "#version 430 core\n";
    const auto program = Program::fromSource(
        version + shaderInterface(ShaderStage::Vertex, plans) + kSceneVertexShader,
        version + shaderInterface(ShaderStage::Fragment, plans) + kSceneFragmentShader, error);
    if (!program)
        qFatal("%s", qPrintable(error));

    GPUModel model;
    addRow(model, {Qt::red, Qt::green}); // or ModelBuilder::upload(&model, ...)

    Framebuffer picture(QSize(16, 8));
    picture.begin();
    const AutoBinder binder(program.get());
    model.draw();

    EXPECT_EQ(picture.pixels().pixelColor(2, 4), QColor(Qt::red));
    EXPECT_EQ(picture.pixels().pixelColor(10, 4), QColor(Qt::green));
}

} // namespace Atelier::Vel::Testing
