#include "glhooks.h"

#include <velgl/gpumodel.h>

#include <gmock/gmock.h>

#include <velgl/glentrypoints.h>
#include <velgl/instancedatacollection.h>
#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>
#include <velgl/shaderinterface.h>
#include <velgl/texture.h>

#include "scenefixture.h"
#include "support/messagelog.h"

// Which textures are bound to which units in a draw, and which uniforms describe them to the shaders.
namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using DataType = InstanceDataPlan::DataType;

class ModelTexturesTest : public SceneFixture {};

GLint boundTexture(int unit) {
    GLint active = 0;
    GLint name = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    glActiveTexture(GLenum(GL_TEXTURE0 + unit));
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &name);
    glActiveTexture(GLenum(active));
    return name;
}

GLint uniformOf(GLuint program, const char* name) {
    GLint value = 12345;
    const GLint location = glGetUniformLocation(program, name);
    EXPECT_GE(location, 0) << name;
    glGetUniformiv(program, location, &value);
    return value;
}

/// A drawable of one triangle for each material.
void addMaterials(GPUModel& model, const QString& plan, const QList<InstanceData>& materials) {
    QList<InstanceData> instances;
    for (int i = 0; i < materials.size(); ++i)
        instances << movedInstance({});
    model.add(triangleRow(materials.size()), 1, new InstanceDataCollection(plan, materials),
              new InstanceDataCollection(QStringLiteral("TestInstance"), instances), 0);
}

/// Registers a plan with `count` textures, "t0" and so on.
/// Returns: its name.
QString planOfTextures(int count) {
    auto* plan = new InstanceDataPlan(QStringLiteral("Textures%1").arg(count));
    plan->addMember(DataType::Float, QStringLiteral("opacity"));
    for (int i = 0; i < count; ++i)
        plan->addMember(DataType::Texture, QStringLiteral("t%1").arg(i));
    const QString name = plan->name();
    InstanceDataRegistry::Instance().registerPlan(plan);
    return name;
}

/// Returns: a program with the uniform `velgl_textures` at location 0.
std::unique_ptr<Program> presenceProgram() {
    QString error;
    auto program = Program::fromSource("#version 430 core\nin vec3 va_Vertex;\n"
                                       "void main() { gl_Position = vec4(va_Vertex, 1.0); }\n",
                                       "#version 430 core\nlayout(location = 0) uniform int velgl_textures;\n"
                                       "out vec4 pixel;\n"
                                       "void main() { pixel = vec4(velgl_textures == 0 ? 0.0 : 1.0); }\n",
                                       error);
    EXPECT_TRUE(program) << error.toStdString();
    return program;
}

} // namespace

INSTANTIATE_FOR_DRIVERS(ModelTexturesTest);

TEST_P(ModelTexturesTest, FirstThirtyTwoTexturesAreBound) {
    _program = presenceProgram();
    const MessageLog log; // of the two textures that the plan leaves out
    const QString plan = planOfTextures(34);
    std::vector<std::unique_ptr<Texture>> textures;
    InstanceData material(plan);
    for (int i = 0; i < 34; ++i) {
        textures.push_back(Texture::ofColor(QColor(i, i, i)));
        material.setTexture(QStringLiteral("t%1").arg(i), textures.back().get());
    }
    InstanceData last(plan);
    last.setTexture(QStringLiteral("t31"), textures[31].get());
    InstanceData none(plan);
    none.setTexture(QStringLiteral("t32"), textures[32].get());
    GPUModel model;
    addMaterials(model, plan, {material, last, none});
    std::vector<GLint> presence;
    std::vector<GLint> bound;
    {
        const DrawHook hook([&] {
            presence.push_back(uniformOf(_program->name(), "velgl_textures"));
            for (int unit = 0; unit < 34 && presence.size() == 1; ++unit)
                bound.push_back(boundTexture(unit));
        });
        drawnColors(model, 3);
    }
    EXPECT_THAT(presence, ElementsAre(-1, GLint(0x80000000), 0));
    ASSERT_EQ(bound.size(), 34U);
    for (std::size_t unit = 0; unit < 32; ++unit)
        EXPECT_EQ(GLuint(bound[unit]), textures[unit]->name()) << unit;
    EXPECT_EQ(bound[32], 0);
    EXPECT_EQ(bound[33], 0);
    for (int unit = 0; unit < 34; ++unit)
        EXPECT_EQ(boundTexture(unit), 0) << unit;
}

TEST_P(ModelTexturesTest, ConsecutiveCommandsWithTheSameTexturesAreDrawnByOneCall) {
    const std::unique_ptr<Texture> one = Texture::ofColor(Qt::red);
    const std::unique_ptr<Texture> other = Texture::ofColor(Qt::green);
    InstanceData withOne = coloredMaterial(Qt::white);
    withOne.setTexture(QStringLiteral("second"), one.get());
    InstanceData withOther = coloredMaterial(Qt::white);
    withOther.setTexture(QStringLiteral("second"), other.get());
    InstanceData withPath = coloredMaterial(Qt::white);
    withPath.setTexture(QStringLiteral("second"), QStringLiteral("/a.png"));
    InstanceData withOtherPath = coloredMaterial(Qt::white);
    withOtherPath.setTexture(QStringLiteral("second"), QStringLiteral("/b.png"));
    TextureManager::Instance().setLoader(
        [&](const QString& path) { return path == QLatin1String("/a.png") ? one.get() : other.get(); });
    GPUModel model;
    addMaterials(model, QStringLiteral("TestMaterial"),
                 {withOne, withOne, withOther, withPath, withPath, withOtherPath, withOtherPath,
                  coloredMaterial(Qt::white), coloredMaterial(Qt::white)});
    std::vector<int> offsets;
    {
        const DrawHook hook;
        EXPECT_EQ(drawnColors(model, 9), opaque({Qt::red, Qt::red, Qt::green, Qt::red, Qt::red, Qt::green,
                                                 Qt::green, Qt::white, Qt::white}));
        for (const DrawCall& call : hook.calls())
            offsets.push_back(int(call.offset / sizeof(DrawElementsIndirectCommand)));
    }
    if (hasDrawParameters())
        EXPECT_THAT(offsets, ElementsAre(0, 2, 3, 5, 7));
    else
        EXPECT_THAT(offsets, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8));
}

TEST_P(ModelTexturesTest, UnitsFollowTheOrderOfThePlan) {
    const std::unique_ptr<Texture> first = Texture::ofColor(Qt::red);
    const std::unique_ptr<Texture> second = Texture::ofColor(Qt::green);
    Texture* white = TextureManager::Instance().colorTexture(Qt::white);
    InstanceData both = coloredMaterial(Qt::white);
    both.setTexture(QStringLiteral("first"), first.get());
    both.setTexture(QStringLiteral("second"), second.get());
    InstanceData onlySecond = coloredMaterial(Qt::white);
    onlySecond.setTexture(QStringLiteral("second"), second.get());
    GPUModel model;
    addMaterials(model, QStringLiteral("TestMaterial"), {both, onlySecond, coloredMaterial(Qt::white)});
    std::vector<GLint> seen;
    {
        const DrawHook hook([&] {
            for (const int unit : {0, 1, 2})
                seen.push_back(boundTexture(unit));
            seen.push_back(uniformOf(_program->name(), "velgl_textures"));
        });
        drawnColors(model, 3);
    }
    const auto name = [](const Texture& texture) { return GLint(texture.name()); };
    EXPECT_THAT(seen, ElementsAre(name(*first), name(*second), 0, 3, //
                                  name(*white), name(*second), 0, 2, //
                                  name(*white), name(*white), 0, 0));
}

TEST_P(ModelTexturesTest, UnusableTextureIsWhiteAndCountsAsPresent) {
    Texture cube(GL_TEXTURE_CUBE_MAP, GL_RGBA8, 1, 1, 0, nullptr);
    Texture unmade(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr);
    unmade.setReadOnly(); // its content may come later
    InstanceData material = coloredMaterial(Qt::white);
    material.setTexture(QStringLiteral("first"), &cube);
    material.setTexture(QStringLiteral("second"), &unmade);
    GPUModel model;
    addMaterials(model, QStringLiteral("TestMaterial"), {material});
    const MessageLog log;
    std::vector<GLint> seen;
    {
        const DrawHook hook([&] {
            seen = {boundTexture(0), boundTexture(1), uniformOf(_program->name(), "velgl_textures")};
        });
        drawnColors(model, 1);
    }
    const auto white = GLint(TextureManager::Instance().colorTexture(Qt::white)->name());
    EXPECT_THAT(seen, ElementsAre(white, white, 3));
    EXPECT_EQ(cube.name(), 0U);
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

// Each stage of a pipeline is a separate program with its own uniforms.
TEST_P(ModelTexturesTest, BothStagesOfAPipelineGetTheirUniforms) {
    const ShaderPlans plans{QStringLiteral("TestMaterial"), QStringLiteral("TestInstance")};
    const QByteArray version = "#version 430 core\n";
    const QByteArray vertexSource =
        version + shaderInterface(ShaderStage::Vertex, plans) +
        "in vec3 va_Vertex;\nout gl_PerVertex { vec4 gl_Position; };\n"
        "layout(location = 0) flat out int command;\nlayout(location = 1) flat out int isTextured;\n"
        "void main() { command = velglCommand(); isTextured = velglHas_second() ? 1 : 0;\n"
        "gl_Position = vec4(va_Vertex, 1.0); }\n";
    const QByteArray fragmentSource =
        version + shaderInterface(ShaderStage::Fragment, plans) +
        "layout(location = 0) flat in int command;\nlayout(location = 1) flat in int isTextured;\n"
        "out vec4 pixel;\n"
        "void main() { pixel = vec4(float(command + 1) * 10.0 / 255.0, float(isTextured),\n"
        "                           velglHas_second() ? 1.0 : 0.0, 1.0); }\n";
    const char* vertexText = vertexSource.constData();
    const char* fragmentText = fragmentSource.constData();
    const GLuint vertex = glCreateShaderProgramv(GL_VERTEX_SHADER, 1, &vertexText);
    const GLuint fragment = glCreateShaderProgramv(GL_FRAGMENT_SHADER, 1, &fragmentText);
    GLuint pipeline = 0;
    glGenProgramPipelines(1, &pipeline);
    glUseProgramStages(pipeline, GL_VERTEX_SHADER_BIT, vertex);
    glUseProgramStages(pipeline, GL_FRAGMENT_SHADER_BIT, fragment);
    glBindProgramPipeline(pipeline);
    const std::unique_ptr<Texture> texture = Texture::ofColor(Qt::red);
    InstanceData textured = coloredMaterial(Qt::white);
    textured.setTexture(QStringLiteral("second"), texture.get());
    GPUModel model;
    addMaterials(model, plans.materials, {coloredMaterial(Qt::white), textured, textured, InstanceData()});
    Framebuffer picture(QSize(32, 8));
    picture.begin();
    model.draw();
    const QImage pixels = picture.pixels();
    EXPECT_EQ(pixels.pixelColor(2, 4), QColor(10, 0, 0));
    EXPECT_EQ(pixels.pixelColor(10, 4), QColor(20, 255, 255));
    EXPECT_EQ(pixels.pixelColor(18, 4), QColor(30, 255, 255));
    EXPECT_EQ(pixels.pixelColor(26, 4), QColor(40, 0, 0));
    glDeleteProgramPipelines(1, &pipeline);
    glDeleteProgram(vertex);
    glDeleteProgram(fragment);
}

// A program in use hides the pipeline.
TEST_P(ModelTexturesTest, ProgramInUseGetsTheUniformsInsteadOfThePipeline) {
    const char* source = "#version 430 core\nuniform int velgl_textures;\nout vec4 pixel;\n"
                         "void main() { pixel = vec4(velgl_textures); }\n";
    const GLuint fragment = glCreateShaderProgramv(GL_FRAGMENT_SHADER, 1, &source);
    GLuint pipeline = 0;
    glGenProgramPipelines(1, &pipeline);
    glUseProgramStages(pipeline, GL_FRAGMENT_SHADER_BIT, fragment);
    glBindProgramPipeline(pipeline);
    const std::unique_ptr<Texture> texture = Texture::ofColor(Qt::red);
    InstanceData material = coloredMaterial(Qt::white);
    material.setTexture(QStringLiteral("first"), texture.get());
    GPUModel model;
    addMaterials(model, QStringLiteral("TestMaterial"), {material});
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::red}));
    EXPECT_EQ(uniformOf(_program->name(), "velgl_textures"), 1);
    EXPECT_EQ(uniformOf(fragment, "velgl_textures"), 0);
    glBindProgramPipeline(0);
    glDeleteProgramPipelines(1, &pipeline);
    glDeleteProgram(fragment);
}

TEST_P(ModelTexturesTest, PathIsLoadedAtItsFirstDraw) {
    const std::unique_ptr<Texture> texture = Texture::ofColor(Qt::green);
    QStringList asked;
    TextureManager::Instance().setLoader([&](const QString& path) {
        asked << path;
        return texture.get();
    });
    InstanceData material = coloredMaterial(Qt::white);
    material.setTexture(QStringLiteral("first"), QStringLiteral("/green.png"));
    GPUModel model;
    addMaterials(model, QStringLiteral("TestMaterial"), {material, coloredMaterial(Qt::red)});
    EXPECT_TRUE(asked.isEmpty());
    EXPECT_EQ(drawnColors(model, 2), opaque({Qt::green, Qt::red}));
    EXPECT_EQ(asked, QStringList{QStringLiteral("/green.png")});
}

} // namespace Atelier::Vel::Testing
