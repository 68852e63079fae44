#include <epoxy/gl.h>

#include <velgl/vertexarrayobject.h>

#include <QtCore/QFloat16>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/program.h>

#include "featurefixture.h"
#include "support/messagelog.h"
#include "testscene.h"

namespace Atelier::Vel::Testing {

namespace {

class VertexArrayObjectTest : public FeatureFixture {};

const QByteArray kFragmentShader = "#version 430 core\nflat in vec4 color;\nout vec4 pixel;\n"
                                   "void main() { pixel = color; }\n";

// Covers the picture with one triangle in the colour that `conversion`, in GLSL, makes of the attribute
// "value".
std::unique_ptr<Program> valueProgram(const QByteArray& type, const QByteArray& conversion) {
    QString error;
    auto program = Program::fromSource("#version 430 core\nin " + type +
                                           " value;\nflat out vec4 color;\n"
                                           "void main() {\n    color = " +
                                           conversion +
                                           ";\n    vec2 corner = vec2(gl_VertexID & 1, gl_VertexID >> 1);\n"
                                           "    gl_Position = vec4(corner * 4.0 - 1.0, 0.0, 1.0);\n}\n",
                                       kFragmentShader, error);
    EXPECT_TRUE(program) << error.toStdString();
    return program;
}

// Draws the three vertices of a stream as one triangle.
std::unique_ptr<DrawBuffers> triangleOf(const QSharedPointer<BufferObject>& stream, int components,
                                        unsigned int type) {
    const QVector<unsigned int> indices = {0, 1, 2};
    auto vao = QSharedPointer<VertexArrayObject>::create();
    vao->registerBO(QStringLiteral("value"), stream, components, type);
    auto buffers = std::make_unique<DrawBuffers>();
    buffers->setVAO(vao);
    buffers->setIndexedDraw(bufferOf(indices), 3, GL_UNSIGNED_INT);
    const DrawElementsIndirectCommand command = cellCommand(0);
    buffers->setDrawElementsIndirectCommands(&command, 1);
    return buffers;
}

QColor drawn(Program& program, DrawBuffers& buffers) {
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    const AutoBinder binder(&program);
    buffers.draw(0, 1);
    return picture.pixels().pixelColor(1, 1);
}

// A program that OpenGL links without VelGL, with the attribute "value" at a location.
GLuint otherProgram(int location) {
    const QByteArray source = "#version 430 core\nlayout(location = " + QByteArray::number(location) +
                              ") in vec3 value;\nvoid main() { gl_Position = vec4(value, 1.0); }\n";
    const char* const text = source.constData();
    const GLuint shader = glCreateShader(GL_VERTEX_SHADER);
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    const GLuint program = glCreateProgram();
    glAttachShader(program, shader);
    glLinkProgram(program);
    glDeleteShader(shader);
    return program;
}

/// Returns: three vertices, each with the first `count` of `components`.
template<typename Scalar>
QVector<Scalar> verticesOf(const QVector<Scalar>& components, int count) {
    const QVector<Scalar> vertex = components.mid(0, count);
    return vertex + vertex + vertex;
}

template<typename Scalar>
QVector<Scalar> threeTimes(Scalar x, Scalar y, Scalar z) {
    return {x, y, z, x, y, z, x, y, z};
}

} // namespace

INSTANTIATE_FOR_DRIVERS(VertexArrayObjectTest);

TEST_P(VertexArrayObjectTest, FloatAttributeTakesEveryElementTypeAsItsValue) {
    const auto program = valueProgram("vec3", "vec4(value / 255.0, 1.0)");
    const auto color = [&](const QSharedPointer<BufferObject>& stream, unsigned int type) {
        return drawn(*program, *triangleOf(stream, 3, type));
    };
    const QColor expected(51, 102, 0);
    EXPECT_EQ(color(bufferOf(threeTimes<float>(51, 102, 0)), GL_FLOAT), expected);
    EXPECT_EQ(color(bufferOf(threeTimes<double>(51, 102, 0)), GL_DOUBLE), expected);
    EXPECT_EQ(color(bufferOf(threeTimes<int>(51, 102, -5)), GL_INT), expected);
    EXPECT_EQ(color(bufferOf(threeTimes<unsigned int>(51, 102, 0)), GL_UNSIGNED_INT), expected);
    EXPECT_EQ(color(bufferOf(threeTimes<short>(51, 102, -5)), GL_SHORT), expected);
    EXPECT_EQ(color(bufferOf(threeTimes<unsigned short>(51, 102, 0)), GL_UNSIGNED_SHORT), expected);
    EXPECT_EQ(color(bufferOf(threeTimes<signed char>(51, 102, -5)), GL_BYTE), expected);
    EXPECT_EQ(color(bufferOf(threeTimes<unsigned char>(51, 102, 0)), GL_UNSIGNED_BYTE), expected);
}

TEST_P(VertexArrayObjectTest, IntegerAttributeKeepsIntegers) {
    const auto program = valueProgram("ivec3", "vec4(value == ivec3(16777217, -3, 5) ? 1.0 : 0.0)");
    const auto buffers = triangleOf(bufferOf(threeTimes<int>(16777217, -3, 5)), 3, GL_INT);
    EXPECT_EQ(drawn(*program, *buffers), QColor(Qt::white));
}

TEST_P(VertexArrayObjectTest, DoubleAttributeKeepsDoubles) {
    const auto program =
        valueProgram("dvec3", "vec4(value.x - 1.0lf == 1.0lf / 1099511627776.0lf ? 1.0 : 0.0)");
    const auto buffers =
        triangleOf(bufferOf(threeTimes<double>(1.0 + 1.0 / 1099511627776.0, 0, 0)), 3, GL_DOUBLE);
    EXPECT_EQ(drawn(*program, *buffers), QColor(Qt::white));
}

TEST_P(VertexArrayObjectTest, AttributesOfEachShapeAreReadAsDeclared) {
    struct Shape {
        const char* type;
        int components;
        const char* expected;
    };
    const auto expectRead = [](const Shape& shape, const QSharedPointer<BufferObject>& stream, GLenum type) {
        const auto program =
            valueProgram(shape.type, "vec4(value == " + QByteArray(shape.expected) + " ? 1.0 : 0.0)");
        EXPECT_EQ(drawn(*program, *triangleOf(stream, shape.components, type)), QColor(Qt::white))
            << shape.type;
    };
    for (const Shape& shape :
         {Shape{"int", 1, "7"}, Shape{"ivec2", 2, "ivec2(7, -8)"}, Shape{"ivec3", 3, "ivec3(7, -8, 9)"},
          Shape{"ivec4", 4, "ivec4(7, -8, 9, 10)"}})
        expectRead(shape, bufferOf(verticesOf(QVector<int>{7, -8, 9, 10}, shape.components)), GL_INT);
    for (const Shape& shape : {Shape{"uint", 1, "3000000000u"}, Shape{"uvec2", 2, "uvec2(3000000000u, 8u)"},
                               Shape{"uvec3", 3, "uvec3(3000000000u, 8u, 9u)"},
                               Shape{"uvec4", 4, "uvec4(3000000000u, 8u, 9u, 10u)"}})
        expectRead(shape,
                   bufferOf(verticesOf(QVector<unsigned int>{3000000000U, 8, 9, 10}, shape.components)),
                   GL_UNSIGNED_INT);
    // As floats they would equal 1, 2, 3 and 4.
    for (const Shape& shape :
         {Shape{"double", 1, "1.0000000000009lf"}, Shape{"dvec2", 2, "dvec2(1.0000000000009lf, 2.0lf)"},
          Shape{"dvec3", 3, "dvec3(1.0000000000009lf, 2.0lf, 3.0lf)"},
          Shape{"dvec4", 4, "dvec4(1.0000000000009lf, 2.0lf, 3.0lf, 4.0lf)"}})
        expectRead(shape, bufferOf(verticesOf(QVector<double>{1.0000000000009, 2, 3, 4}, shape.components)),
                   GL_DOUBLE);
}

TEST_P(VertexArrayObjectTest, IntegerAttributeTakesEachIntegerType) {
    const auto program = valueProgram("ivec3", "vec4(value == ivec3(1, 2, 3) ? 1.0 : 0.0)");
    const auto color = [&](const QSharedPointer<BufferObject>& stream, unsigned int type) {
        return drawn(*program, *triangleOf(stream, 3, type));
    };
    EXPECT_EQ(color(bufferOf(threeTimes<signed char>(1, 2, 3)), GL_BYTE), QColor(Qt::white));
    EXPECT_EQ(color(bufferOf(threeTimes<unsigned char>(1, 2, 3)), GL_UNSIGNED_BYTE), QColor(Qt::white));
    EXPECT_EQ(color(bufferOf(threeTimes<short>(1, 2, 3)), GL_SHORT), QColor(Qt::white));
    EXPECT_EQ(color(bufferOf(threeTimes<unsigned short>(1, 2, 3)), GL_UNSIGNED_SHORT), QColor(Qt::white));
    EXPECT_EQ(color(bufferOf(threeTimes<int>(1, 2, 3)), GL_INT), QColor(Qt::white));
    EXPECT_EQ(color(bufferOf(threeTimes<unsigned int>(1, 2, 3)), GL_UNSIGNED_INT), QColor(Qt::white));
}

TEST_P(VertexArrayObjectTest, HalvesAreReadAsTheirValues) {
    const auto program = valueProgram("vec3", "vec4(value, 1.0)");
    const QVector<qfloat16> halves = threeTimes(qfloat16(1), qfloat16(0), qfloat16(1));
    EXPECT_EQ(drawn(*program, *triangleOf(bufferOf(halves), 3, GL_HALF_FLOAT)), QColor(Qt::magenta));
}

TEST_P(VertexArrayObjectTest, StreamThatTheShaderCannotReadIsReportedOnce) {
    const auto integers = valueProgram("ivec3", "vec4(value, 1.0)");
    const auto floats = triangleOf(bufferOf(threeTimes<float>(1, 2, 3)), 3, GL_FLOAT);
    const auto tooWide = triangleOf(bufferOf(threeTimes<int>(1, 2, 3)), 5, GL_INT);
    const auto oddType = triangleOf(bufferOf(threeTimes<int>(1, 2, 3)), 3, 0x1407);
    const MessageLog log;
    for (int round = 0; round < 2; ++round)
        for (const auto* buffers : {&floats, &tooWide, &oddType})
            drawn(*integers, **buffers);
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::ElementsAre(
                    QStringLiteral("Attribute 'value' cannot be read from 3 components of type 0x1406"),
                    QStringLiteral("Attribute 'value' cannot be read from 5 components of type 0x1404"),
                    QStringLiteral("Attribute 'value' cannot be read from 3 components of type 0x1407")));
}

TEST_P(VertexArrayObjectTest, ComponentsAndTypesThatCannotBeReadAreReported) {
    const auto floats = valueProgram("vec3", "vec4(value, 1.0)");
    const auto doubles = valueProgram("dvec3", "vec4(value, 1.0)");
    const auto integers = valueProgram("ivec3", "vec4(value, 1.0)");
    const auto stream = bufferOf(QVector<int>(24));
    const MessageLog log;
    for (const int components : {0, -1, 5})
        drawn(*floats, *triangleOf(stream, components, GL_FLOAT));
    drawn(*doubles, *triangleOf(stream, 3, GL_FLOAT));
    drawn(*integers, *triangleOf(stream, 3, GL_DOUBLE));
    drawn(*integers, *triangleOf(stream, 3, GL_HALF_FLOAT));
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::ElementsAre("Attribute 'value' cannot be read from 0 components of type 0x1406",
                                     "Attribute 'value' cannot be read from -1 components of type 0x1406",
                                     "Attribute 'value' cannot be read from 5 components of type 0x1406",
                                     "Attribute 'value' cannot be read from 3 components of type 0x1406",
                                     "Attribute 'value' cannot be read from 3 components of type 0x140A",
                                     "Attribute 'value' cannot be read from 3 components of type 0x140B"));
}

// One location, which three programs read as three kinds.
TEST_P(VertexArrayObjectTest, KindOfAnAttributeFollowsTheProgram) {
    const QByteArray place = "layout(location = 2) ";
    const auto programOf = [&](const QByteArray& type, const QByteArray& conversion) {
        QString error;
        auto program =
            Program::fromSource("#version 430 core\n" + place + "in " + type +
                                    " value;\nflat out vec4 color;\nvoid main() { color = " + conversion +
                                    ";\nvec2 corner = vec2(gl_VertexID & 1, gl_VertexID >> 1);\n"
                                    "gl_Position = vec4(corner * 4.0 - 1.0, 0.0, 1.0); }\n",
                                kFragmentShader, error);
        EXPECT_TRUE(program) << error.toStdString();
        return program;
    };
    const auto floats = programOf("vec3", "vec4(value == vec3(1.0, 2.0, 3.0) ? 1.0 : 0.0)");
    const auto integers = programOf("ivec3", "vec4(value == ivec3(1, 2, 3) ? 1.0 : 0.0)");
    const auto row = triangleOf(bufferOf(threeTimes<int>(1, 2, 3)), 3, GL_INT);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(drawn(*floats, *row), QColor(Qt::white));
        EXPECT_EQ(drawn(*integers, *row), QColor(Qt::white));
    }
}

TEST_P(VertexArrayObjectTest, AttributesOfTheLastProgramAreDisabled) {
    const auto buffers = triangleOf(bufferOf(threeTimes<float>(1, 0, 0)), 3, GL_FLOAT);
    const auto reader = valueProgram("vec3", "vec4(value, 1.0)");
    const auto other = valueProgram("vec3", "vec4(value, 1.0)");
    QString error;
    const auto unrelated =
        Program::fromSource("#version 430 core\nvoid main() { gl_Position = vec4(0.0); }\n",
                            "#version 430 core\nvoid main() {}\n", error);
    const auto isEnabled = [](GLuint location) {
        GLint enabled = -1;
        glGetVertexAttribiv(location, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
        return enabled;
    };
    const auto location = GLuint(glGetAttribLocation(reader->name(), "value"));
    {
        const AutoBinder program(reader.get());
        const AutoBinder vao(buffers->VAO().data());
        EXPECT_EQ(isEnabled(location), GL_TRUE);
    }
    {
        const AutoBinder program(unrelated.get());
        const AutoBinder vao(buffers->VAO().data());
        EXPECT_EQ(isEnabled(location), GL_FALSE);
    }
    EXPECT_EQ(drawn(*other, *buffers), QColor(Qt::red));
    const AutoBinder vao(buffers->VAO().data());
    EXPECT_EQ(isEnabled(location), GL_FALSE) << "without a program there is nothing to read";
}

TEST_P(VertexArrayObjectTest, IndexBufferCanBeChanged) {
    VertexArrayObject vao;
    const auto indices = bufferOf(QVector<unsigned int>{0, 1, 2});
    const auto bound = [&] {
        const AutoBinder binder(&vao);
        GLint name = 0;
        glGetIntegerv(GL_ELEMENT_ARRAY_BUFFER_BINDING, &name);
        return GLuint(name);
    };
    EXPECT_EQ(bound(), 0U);
    vao.setIndexBuffer(indices);
    EXPECT_EQ(bound(), indices->name());
    vao.setIndexBuffer({});
    EXPECT_EQ(bound(), 0U);
}

TEST_P(VertexArrayObjectTest, LabelSetAfterABindReachesTheDriverWithTheNextBind) {
    VertexArrayObject vao;
    const auto label = [&] {
        const AutoBinder binder(&vao);
        GLint name = 0;
        glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &name);
        char text[32] = {};
        glGetObjectLabel(GL_VERTEX_ARRAY, GLuint(name), sizeof text, nullptr, text);
        return std::string(text);
    };
    EXPECT_EQ(label(), "");
    vao.setLabel(QStringLiteral("array"));
    EXPECT_EQ(vao.label(), QStringLiteral("array"));
    EXPECT_EQ(label(), "array");
}

TEST_P(VertexArrayObjectTest, BindsAreRevertedOneByOne) {
    VertexArrayObject vao;
    const auto bound = [] {
        GLint name = 0;
        glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &name);
        return name;
    };
    ASSERT_TRUE(vao.bind());
    ASSERT_TRUE(vao.bind());
    vao.unbind();
    EXPECT_NE(bound(), 0);
    vao.unbind();
    EXPECT_EQ(bound(), 0);
}

TEST_P(VertexArrayObjectTest, UnbindInAnotherContextChangesNothing) {
    const auto other = makeContext(options());
    VertexArrayObject vao;
    VertexArrayObject others;
    ASSERT_TRUE(vao.bind());
    other->makeCurrent();
    watchMessages();
    ASSERT_TRUE(others.bind());
    vao.unbind();
    GLint name = 0;
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &name);
    EXPECT_NE(name, 0);
    others.unbind();
    _context->makeCurrent();
}

TEST_P(VertexArrayObjectTest, AttributesFollowTheCurrentProgram) {
    const QVector<float> red = threeTimes<float>(1, 0, 0);
    const QVector<float> blue = threeTimes<float>(0, 0, 1);
    const auto buffers = triangleOf(bufferOf(red), 3, GL_FLOAT);
    buffers->VAO()->registerBO(QStringLiteral("other"), bufferOf(blue), 3, GL_FLOAT);
    const auto first = valueProgram("vec3", "vec4(value, 1.0)");
    QString error;
    const auto second = Program::fromSource(
        "#version 430 core\nlayout(location = 3) in vec3 value;\nlayout(location = 0) in vec3 other;\n"
        "flat out vec4 color;\nvoid main() { color = vec4(value + other, 1.0);\n"
        "vec2 corner = vec2(gl_VertexID & 1, gl_VertexID >> 1);\n"
        "gl_Position = vec4(corner * 4.0 - 1.0, 0.0, 1.0); }\n",
        kFragmentShader, error);
    ASSERT_TRUE(second) << error.toStdString();
    EXPECT_EQ(drawn(*first, *buffers), QColor(Qt::red));
    EXPECT_EQ(drawn(*second, *buffers), QColor(Qt::magenta));
    EXPECT_EQ(drawn(*first, *buffers), QColor(Qt::red));
}

TEST_P(VertexArrayObjectTest, AttributesFollowEachProgramOfOtherCode) {
    VertexArrayObject vao;
    vao.registerBO(QStringLiteral("value"), bufferOf(threeTimes<float>(1, 2, 3)), 3, GL_FLOAT);
    for (const int location : {1, 3, 1}) {
        const GLuint program = otherProgram(location);
        glUseProgram(program);
        const AutoBinder binder(&vao);
        for (const int other : {1, 3}) {
            GLint isEnabled = -1;
            glGetVertexAttribiv(GLuint(other), GL_VERTEX_ATTRIB_ARRAY_ENABLED, &isEnabled);
            EXPECT_EQ(isEnabled, other == location ? GL_TRUE : GL_FALSE) << location;
        }
        glUseProgram(0);
        glDeleteProgram(program);
    }
}

TEST_P(VertexArrayObjectTest, SharedArrayHasTheIndicesOfTheLastDraw) {
    const auto program = valueProgram("vec3", "vec4(value, 1.0)");
    const auto first = triangleOf(bufferOf(threeTimes<float>(1, 0, 0)), 3, GL_FLOAT);
    const auto second = triangleOf(bufferOf(threeTimes<float>(1, 0, 0)), 3, GL_FLOAT);
    second->setVAO(first->VAO());
    for (DrawBuffers* buffers : {first.get(), second.get(), first.get()}) {
        EXPECT_EQ(drawn(*program, *buffers), QColor(Qt::red));
        const AutoBinder binder(first->VAO().data());
        GLint indices = 0;
        glGetIntegerv(GL_ELEMENT_ARRAY_BUFFER_BINDING, &indices);
        EXPECT_EQ(GLuint(indices), buffers->indexBuffer()->name());
    }
}

TEST_P(VertexArrayObjectTest, StreamRegisteredAfterADrawIsReadByTheNext) {
    const auto program = valueProgram("vec3", "vec4(value, 1.0)");
    const auto buffers = triangleOf(bufferOf(threeTimes<float>(1, 0, 0)), 3, GL_FLOAT);
    auto vao = QSharedPointer<VertexArrayObject>::create();
    vao->registerBO(QStringLiteral("unread"), bufferOf(threeTimes<float>(0, 0, 1)), 3, GL_FLOAT);
    buffers->setVAO(vao);
    EXPECT_NE(drawn(*program, *buffers), QColor(Qt::red));
    vao->registerBO(QStringLiteral("value"), bufferOf(threeTimes<float>(1, 0, 0)), 3, GL_FLOAT);
    EXPECT_EQ(drawn(*program, *buffers), QColor(Qt::red));
}

TEST_P(VertexArrayObjectTest, SecondStreamOfANameReplacesTheFirst) {
    const auto program = valueProgram("vec3", "vec4(value, 1.0)");
    const auto buffers = triangleOf(bufferOf(threeTimes<float>(1, 0, 0)), 3, GL_FLOAT);
    EXPECT_EQ(drawn(*program, *buffers), QColor(Qt::red));
    buffers->VAO()->registerBO(QStringLiteral("value"), bufferOf(threeTimes<float>(0, 1, 0)), 3, GL_FLOAT);
    EXPECT_EQ(buffers->VAO()->streams().size(), 1);
    EXPECT_EQ(drawn(*program, *buffers), QColor(Qt::green));
}

TEST_P(VertexArrayObjectTest, StreamWithoutContentIsLeftOut) {
    const auto program = valueProgram("vec3", "vec4(value, 1.0)");
    const auto buffers = triangleOf(QSharedPointer<BufferObject>::create(), 3, GL_FLOAT);
    buffers->VAO()->registerBO(QStringLiteral("nothing"), {}, 3, GL_FLOAT);
    EXPECT_EQ(drawn(*program, *buffers), QColor(Qt::black));
}

TEST_P(VertexArrayObjectTest, UnbindRestoresTheVertexArray) {
    GLuint client = 0;
    glGenVertexArrays(1, &client);
    glBindVertexArray(client);
    VertexArrayObject vao;
    ASSERT_TRUE(vao.bind());
    GLint bound = 0;
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &bound);
    EXPECT_NE(GLuint(bound), client);
    vao.unbind();
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &bound);
    EXPECT_EQ(GLuint(bound), client);
    glDeleteVertexArrays(1, &client);
}

TEST_P(VertexArrayObjectTest, ObjectsWithoutALabelGetOne) {
    const auto indices = QSharedPointer<BufferObject>::create();
    const auto stream = QSharedPointer<BufferObject>::create();
    const auto labelled = QSharedPointer<BufferObject>::create();
    labelled->setLabel(QStringLiteral("mine"));
    auto vao = QSharedPointer<VertexArrayObject>::create();
    vao->registerBO(QStringLiteral("va_Vertex"), stream, 3, GL_FLOAT);
    vao->registerBO(QStringLiteral("va_Normal"), labelled, 3, GL_FLOAT);
    auto* buffers = new DrawBuffers;
    buffers->setVAO(vao);
    buffers->setIndexedDraw(indices, 0, GL_UNSIGNED_INT);
    GPUModel model;
    model.add(buffers, 1, nullptr, nullptr, 0);
    EXPECT_EQ(stream->label(), QStringLiteral("va_Vertex"));
    EXPECT_EQ(labelled->label(), QStringLiteral("mine"));
    EXPECT_EQ(indices->label(), QStringLiteral("indices"));
    const AutoBinder binder(vao.data());
    GLint name = 0;
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &name);
    char text[32] = {};
    glGetObjectLabel(GL_VERTEX_ARRAY, GLuint(name), sizeof text, nullptr, text);
    EXPECT_STREQ(text, "drawable 0");
}

} // namespace Atelier::Vel::Testing
