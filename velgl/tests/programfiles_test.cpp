#include <epoxy/gl.h>

#include <velgl/program.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velgl/shaderinterface.h>

#include "featurefixture.h"
#include "testscene.h"

namespace Atelier::Vel::Testing {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

const QByteArray kVersion = "#version 430 core\n";
const QByteArray kPlainVertexShader = kVersion + "in vec3 va_Vertex;\n"
                                                 "void main() { gl_Position = vec4(va_Vertex, 1.0); }\n";
const QByteArray kPlainFragmentShader = kVersion + "out vec4 pixel;\n"
                                                   "void main() { pixel = vec4(1.0); }\n";

class ProgramFilesTest : public FeatureFixture {
protected:
    void SetUp() override {
        FeatureFixture::SetUp();
        registerTestPlans();
        write(QStringLiteral("plain.vert"), kPlainVertexShader);
        write(QStringLiteral("plain.frag"), kPlainFragmentShader);
    }

    QString path(const QString& name) const { return _folder.filePath(name); }

    void write(const QString& name, const QByteArray& text) const {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    std::unique_ptr<Program> program(const QString& vertex, const QString& fragment,
                                     const ShaderPlans& plans = {}) {
        return Program::fromFiles(path(vertex), path(fragment), plans, _error);
    }

    // Returns: the error of a program with a fragment shader of that text.
    std::string errorOf(const QByteArray& fragmentShader) {
        write(QStringLiteral("bad.frag"), fragmentShader);
        EXPECT_FALSE(program(QStringLiteral("plain.vert"), QStringLiteral("bad.frag"), _plans));
        takeSevereMessages(); // the driver reports the error as well
        return _error.toStdString();
    }

    std::string startOfErrors() const {
        return QStringLiteral("Fragment shader '%1': ").arg(path(QStringLiteral("bad.frag"))).toStdString();
    }

    const ShaderPlans _plans = {QStringLiteral("TestMaterial"), QStringLiteral("TestInstance")};
    QTemporaryDir _folder;
    QString _error;
};

int locationOf(const Program& program, const char* attribute) {
    return glGetAttribLocation(program.name(), attribute);
}

} // namespace

INSTANTIATE_FOR_DRIVERS(ProgramFilesTest);

TEST_P(ProgramFilesTest, DrawsWithTheDeclarationsOfThePlans) {
    write(QStringLiteral("scene.vert"), kVersion + kSceneVertexShader);
    write(QStringLiteral("scene.frag"), kVersion + kSceneFragmentShader);
    const auto scene = program(QStringLiteral("scene.vert"), QStringLiteral("scene.frag"), _plans);
    ASSERT_TRUE(scene) << _error.toStdString();
    GPUModel model;
    addRow(model, {Qt::red, Qt::green});
    Framebuffer picture({16, 8});
    picture.begin();
    DrawOptions options;
    options.program = scene.get();
    model.draw(options);
    EXPECT_EQ(picture.pixels().pixelColor(9, 6), QColor(Qt::green));
}

TEST_P(ProgramFilesTest, FilesWithoutPlansNeedNone) {
    EXPECT_TRUE(program(QStringLiteral("plain.vert"), QStringLiteral("plain.frag"))) << _error.toStdString();
    EXPECT_TRUE(_error.isNull());
}

TEST_P(ProgramFilesTest, ErrorNamesTheFileAndItsLine) {
    const std::string first = errorOf(kVersion + "out vec4 pixel;\nvoid main() { nonsense; }\n");
    EXPECT_THAT(first, StartsWith(startOfErrors()));
    EXPECT_THAT(first, HasSubstr("0:3("));
    EXPECT_THAT(first, HasSubstr("nonsense"));
    EXPECT_THAT(errorOf("// one\n\n" + kVersion + "#extension GL_ARB_texture_gather : enable\n\n\nfolly;\n"),
                HasSubstr("0:7("));
}

TEST_P(ProgramFilesTest, ErrorOfADeclarationIsInSourceOne) {
    EXPECT_THAT(errorOf(kVersion + "#define VelglMaterial 7\n#extension GL_A : enable\nvoid main() {}\n"),
                HasSubstr("1:"));
}

TEST_P(ProgramFilesTest, UnknownPlanIsAnError) {
    EXPECT_FALSE(
        program(QStringLiteral("plain.vert"), QStringLiteral("plain.frag"), {QStringLiteral("Lost"), {}}));
    EXPECT_EQ(_error, "The plan 'Lost' is not registered; is the library that registers it linked?");
    EXPECT_FALSE(program(QStringLiteral("plain.vert"), QStringLiteral("plain.frag"),
                         {QStringLiteral("TestMaterial"), QStringLiteral("Gone")}));
    EXPECT_EQ(_error, "The plan 'Gone' is not registered; is the library that registers it linked?");
}

TEST_P(ProgramFilesTest, UnreadableFileIsNamedWithTheCause) {
    const auto error = [this](const QString& vertex, const QString& fragment) {
        EXPECT_FALSE(program(vertex, fragment));
        return _error;
    };
    EXPECT_EQ(error(QStringLiteral("none.vert"), QStringLiteral("plain.frag")),
              QStringLiteral("Vertex shader '%1': No such file or directory")
                  .arg(path(QStringLiteral("none.vert"))));
    QDir(_folder.path()).mkdir(QStringLiteral("folder"));
    EXPECT_EQ(
        error(QStringLiteral("plain.vert"), QStringLiteral("folder")),
        QStringLiteral("Fragment shader '%1': Is not a regular file").arg(path(QStringLiteral("folder"))));
    write(QStringLiteral("none"), "void main() {}\n");
    EXPECT_EQ(error(QStringLiteral("plain.vert"), QStringLiteral("none")),
              QStringLiteral("Fragment shader '%1': Has no #version line before its code")
                  .arg(path(QStringLiteral("none"))));
    QFile large(path(QStringLiteral("large")));
    ASSERT_TRUE(large.open(QIODevice::WriteOnly) && large.resize((16 << 20) + 1));
    EXPECT_EQ(error(QStringLiteral("large"), QStringLiteral("plain.frag")),
              QStringLiteral("Vertex shader '%1': Is longer than 16 MiB").arg(path(QStringLiteral("large"))));
    ASSERT_TRUE(large.resize(16 << 20));
    EXPECT_TRUE(error(QStringLiteral("large"), QStringLiteral("plain.frag"))
                    .endsWith(QStringLiteral("Has no #version line before its code")));
}

TEST_P(ProgramFilesTest, NeedsAContext) {
    _context->doneCurrent();
    EXPECT_FALSE(program(QStringLiteral("plain.vert"), QStringLiteral("plain.frag")));
    EXPECT_EQ(_error, "No OpenGL context is current");
    _context->makeCurrent();
}

TEST_P(ProgramFilesTest, AttributesGetTheirLocations) {
    ProgramOptions options;
    options.attributeLocations = {{QStringLiteral("va_Vertex"), 5}, {QStringLiteral("absent"), 2}};
    const auto moved = Program::fromFiles(path(QStringLiteral("plain.vert")),
                                          path(QStringLiteral("plain.frag")), {}, options, _error);
    ASSERT_TRUE(moved) << _error.toStdString();
    EXPECT_EQ(locationOf(*moved, "va_Vertex"), 5);
    GLint count = 0;
    glGetIntegerv(GL_MAX_VERTEX_ATTRIBS, &count);
    for (const auto& [name, location] :
         {std::pair("va_Vertex", -1), std::pair("va_Vertex", count), std::pair("gl_VertexID", 1)}) {
        options.attributeLocations = {{QString::fromLatin1(name), location}};
        EXPECT_FALSE(Program::fromSource(kPlainVertexShader, kPlainFragmentShader, options, _error));
        EXPECT_EQ(_error, QStringLiteral("Attribute '%1' cannot have location %2").arg(name).arg(location));
    }
}

TEST_P(ProgramFilesTest, AttributesReadTheStreamsTheyAreMappedTo) {
    ProgramOptions options;
    options.streams = {{QStringLiteral("a_position"), QStringLiteral("va_Vertex")}};
    const auto mapped =
        Program::fromSource(kVersion + "in vec3 a_position;\n"
                                       "void main() { gl_Position = vec4(a_position, 1.0); }\n",
                            kPlainFragmentShader, options, _error);
    ASSERT_TRUE(mapped) << _error.toStdString();
    GPUModel model;
    addRow(model, {Qt::red});
    for (const bool isBound : {false, true}) {
        Framebuffer picture({8, 8});
        picture.begin();
        DrawOptions drawOptions;
        drawOptions.program = isBound ? nullptr : mapped.get();
        if (isBound)
            mapped->bind();
        model.draw(drawOptions);
        if (isBound)
            mapped->unbind();
        EXPECT_EQ(picture.pixels().pixelColor(1, 6), QColor(Qt::white)) << isBound;
    }
}

} // namespace Atelier::Vel::Testing
