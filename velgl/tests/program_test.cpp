#include <epoxy/gl.h>

#include <velgl/program.h>

#include <QtCore/QUuid>

#include <velgl/autobinder.h>
#include <velgl/shaderinterface.h>

#include "featurefixture.h"
#include "testscene.h"

namespace Atelier::Vel::Testing {

namespace {

class ProgramTest : public FeatureFixture {};

const QByteArray kVertexShader = "#version 430 core\n"
                                 "uniform vec4 place;\n"
                                 "void main() { gl_Position = place; }\n";
const QByteArray kFragmentShader = "#version 430 core\n"
                                   "out vec4 pixel;\n"
                                   "void main() { pixel = vec4(1.0); }\n";

GLuint currentProgram() {
    GLint name = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &name);
    return GLuint(name);
}

} // namespace

INSTANTIATE_FOR_DRIVERS(ProgramTest);

TEST_P(ProgramTest, GoodSourceLinks) {
    QString error = QStringLiteral("untouched");
    const auto program = Program::fromSource(kVertexShader, kFragmentShader, error);
    ASSERT_TRUE(program);
    EXPECT_EQ(error, QStringLiteral("untouched"));
    EXPECT_TRUE(glIsProgram(program->name()));
    EXPECT_GE(program->uniformLocation("place"), 0);
    EXPECT_EQ(program->uniformLocation("nowhere"), -1);
}

TEST_P(ProgramTest, ErrorNamesTheStageAndCarriesTheDriversLog) {
    QString error;
    EXPECT_FALSE(
        Program::fromSource("#version 430 core\nvoid main() { nonsense; }\n", kFragmentShader, error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("Vertex shader: "))) << error.toStdString();
    EXPECT_TRUE(error.contains(QStringLiteral("nonsense"))) << error.toStdString();
    EXPECT_FALSE(Program::fromSource(kVertexShader, "#version 430 core\nvoid main() { folly; }\n", error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("Fragment shader: "))) << error.toStdString();
    EXPECT_TRUE(error.contains(QStringLiteral("folly"))) << error.toStdString();
    EXPECT_EQ(error, error.trimmed());
    takeSevereMessages(); // the driver reports both errors as well
}

TEST_P(ProgramTest, MismatchedStagesFailToLink) {
    const QByteArray needy = "#version 430 core\n"
                             "in vec4 missing;\nout vec4 pixel;\n"
                             "void main() { pixel = missing; }\n";
    QString error;
    EXPECT_FALSE(Program::fromSource(kVertexShader, needy, error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("Linking: "))) << error.toStdString();
    EXPECT_TRUE(error.contains(QStringLiteral("missing"))) << error.toStdString();
}

TEST_P(ProgramTest, UnbindRestoresTheProgramInUse) {
    QString error;
    const auto outer = Program::fromSource(kVertexShader, kFragmentShader, error);
    const auto inner = Program::fromSource(kVertexShader, kFragmentShader, error);
    ASSERT_TRUE(outer->bind());
    ASSERT_TRUE(inner->bind());
    EXPECT_EQ(currentProgram(), inner->name());
    inner->unbind();
    EXPECT_EQ(currentProgram(), outer->name());
    outer->unbind();
    EXPECT_EQ(currentProgram(), 0U);
}

TEST_P(ProgramTest, BindsAreRevertedOneByOne) {
    QString error;
    const auto program = Program::fromSource(kVertexShader, kFragmentShader, error);
    ASSERT_TRUE(program->bind());
    ASSERT_TRUE(program->bind());
    program->unbind();
    EXPECT_EQ(currentProgram(), program->name());
    program->unbind();
    EXPECT_EQ(currentProgram(), 0U);
}

TEST_P(ProgramTest, LabelNamesTheObjectForTheDriver) {
    QString error;
    const auto program = Program::fromSource(kVertexShader, kFragmentShader, error);
    program->setLabel(QStringLiteral("plain"));
    char text[32] = {};
    glGetObjectLabel(GL_PROGRAM, program->name(), sizeof text, nullptr, text);
    EXPECT_STREQ(text, "plain");
}

TEST_P(ProgramTest, UnrelatedContextDoesNotKnowTheProgram) {
    QString error;
    const auto program = Program::fromSource(kVertexShader, kFragmentShader, error);
    const auto unrelated = makeContext(options());
    unrelated->makeCurrent();
    watchMessages();
    EXPECT_EQ(program->name(), 0U);
    EXPECT_EQ(program->uniformLocation("place"), -1);
    program->setLabel(QStringLiteral("plain"));
    const auto others = Program::fromSource(kVertexShader, kFragmentShader, error);
    const AutoBinder binder(others.get());
    EXPECT_FALSE(program->bind());
    EXPECT_EQ(currentProgram(), others->name());
    program->unbind();
    EXPECT_EQ(currentProgram(), others->name());
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    _context->makeCurrent();
}

TEST_P(ProgramTest, UnbindInAnotherContextChangesNothing) {
    OpenGLDeviceContext::HeadlessOptions shared = options();
    shared.shareWith = _context;
    const auto sharing = makeContext(shared);
    QString error;
    const auto program = Program::fromSource(kVertexShader, kFragmentShader, error);
    const auto other = Program::fromSource(kVertexShader, kFragmentShader, error);
    ASSERT_TRUE(program->bind());
    sharing->makeCurrent();
    watchMessages();
    ASSERT_TRUE(other->bind());
    program->unbind();
    EXPECT_EQ(currentProgram(), other->name());
    other->unbind();
    _context->makeCurrent();
}

// A driver message of high severity fails the test. The comment in the source makes it unique, so that the
// driver does not take the shader from its cache.
TEST_P(ProgramTest, ShaderInterfaceCompilesWithoutAMessage) {
    registerTestPlans();
    const ShaderPlans plans{QStringLiteral("TestMaterial"), QStringLiteral("TestInstance")};
    const QByteArray start = "#version 430 core\n// " + QUuid::createUuid().toByteArray() + '\n';
    QString error;
    EXPECT_TRUE(Program::fromSource(
        start + shaderInterface(ShaderStage::Vertex, plans) + kSceneVertexShader,
        start + shaderInterface(ShaderStage::Fragment, plans) + kSceneFragmentShader, error))
        << error.toStdString();
}

} // namespace Atelier::Vel::Testing
