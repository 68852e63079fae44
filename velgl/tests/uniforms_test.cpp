#include <epoxy/gl.h>

#include <velgl/program.h>

#include <gmock/gmock.h>

#include "clientstate.h"
#include "featurefixture.h"
#include "support/messagelog.h"

namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;

const char* const kFragmentShader = R"(#version 430 core
uniform int anInt;
uniform uint aUint;
uniform bool aBool;
uniform float aFloat;
uniform vec2 aVec2;
uniform vec3 aVec3;
uniform vec4 aVec4;
uniform mat3 aMat3;
uniform mat4 aMat4;
uniform float list[3];
struct Light { vec3 color; };
uniform Light lights[2];
uniform sampler2D map;
uniform isampler2D numbers;
uniform samplerCubeArray cubes;
uniform ivec2 pair;
out vec4 pixel;
void main() {
    pixel = vec4(anInt + int(aUint) + (aBool ? 1 : 0) + aFloat + aVec2.x + aVec3.x) + aVec4 + aMat4[0];
    pixel.xyz += aMat3[1] + lights[0].color + lights[1].color;
    pixel += texture(map, vec2(0.0)) + vec4(texture(numbers, vec2(0.0))) + texture(cubes, vec4(0.0));
    pixel.x += list[0] + list[1] + list[2] + pair.x;
}
)";

/// Counts the questions for uniforms in its lifetime.
class UniformQueries {
public:
    UniformQueries() {
        queries = 0;
        glGetUniformLocation = [](GLuint program, const GLchar* name) {
            ++queries;
            return before.location(program, name);
        };
        glGetProgramResourceIndex = [](GLuint program, GLenum interface, const GLchar* name) {
            ++queries;
            return before.index(program, interface, name);
        };
    }
    ~UniformQueries() {
        glGetUniformLocation = before.location;
        glGetProgramResourceIndex = before.index;
    }
    UniformQueries(const UniformQueries&) = delete;
    UniformQueries& operator=(const UniformQueries&) = delete;

    int count() const { return queries; }
    /// libepoxy looks a function up in its first call.
    static void callOnce(GLuint program) {
        glGetUniformLocation(program, "x");
        glGetProgramResourceIndex(program, GL_UNIFORM, "x");
        before = {glGetUniformLocation, glGetProgramResourceIndex};
    }

private:
    struct Functions {
        PFNGLGETUNIFORMLOCATIONPROC location;
        PFNGLGETPROGRAMRESOURCEINDEXPROC index;
    };
    static inline Functions before = {};
    static inline int queries = 0;
};

class UniformsTest : public FeatureFixture {
protected:
    void SetUp() override {
        FeatureFixture::SetUp();
        QString error;
        _program = Program::fromSource("#version 430 core\nvoid main() { gl_Position = vec4(0.0); }\n",
                                       kFragmentShader, error);
        ASSERT_TRUE(_program) << error.toStdString();
        _program->setLabel(QStringLiteral("glass"));
    }
    void TearDown() override {
        _program.reset();
        FeatureFixture::TearDown();
    }

    std::vector<float> floats(const char* name, std::size_t count) const {
        std::vector<float> values(16, -99.0F);
        glGetUniformfv(_program->name(), _program->uniformLocation(name), values.data());
        values.resize(count);
        return values;
    }
    int integer(const char* name) const {
        GLint value = -99;
        glGetUniformiv(_program->name(), _program->uniformLocation(name), &value);
        return value;
    }

    std::unique_ptr<Program> _program;
};

} // namespace

INSTANTIATE_FOR_DRIVERS(UniformsTest);

TEST_P(UniformsTest, EachTypeTakesItsValue) {
    EXPECT_TRUE(_program->setUniform("anInt", -3));
    EXPECT_EQ(integer("anInt"), -3);
    EXPECT_TRUE(_program->setUniform("aUint", 7));
    EXPECT_EQ(integer("aUint"), 7);
    EXPECT_TRUE(_program->setUniform("aBool", true));
    EXPECT_EQ(integer("aBool"), 1);
    EXPECT_TRUE(_program->setUniform("aFloat", 1.5F));
    EXPECT_THAT(floats("aFloat", 1), ElementsAre(1.5F));
    EXPECT_TRUE(_program->setUniform("aVec2", QVector2D(1, 2)));
    EXPECT_THAT(floats("aVec2", 2), ElementsAre(1, 2));
    EXPECT_TRUE(_program->setUniform("aVec3", QVector3D(1, 2, 3)));
    EXPECT_THAT(floats("aVec3", 3), ElementsAre(1, 2, 3));
    EXPECT_TRUE(_program->setUniform("aVec4", QVector4D(1, 2, 3, 4)));
    EXPECT_THAT(floats("aVec4", 4), ElementsAre(1, 2, 3, 4));
    for (const char* sampler : {"map", "numbers", "cubes"}) {
        EXPECT_TRUE(_program->setUniform(sampler, 5)) << sampler;
        EXPECT_EQ(integer(sampler), 5);
    }
}

TEST_P(UniformsTest, MatricesAreColumnByColumn) {
    const QMatrix4x4 matrix(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    EXPECT_TRUE(_program->setUniform("aMat4", matrix));
    EXPECT_THAT(floats("aMat4", 16), ElementsAre(1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 4, 8, 12, 16));
    EXPECT_TRUE(_program->setUniform("aMat3", matrix));
    EXPECT_THAT(floats("aMat3", 9), ElementsAre(1, 5, 9, 2, 6, 10, 3, 7, 11));
}

TEST_P(UniformsTest, ColorsAreForVectorsWithAndWithoutAlpha) {
    const QColor color = QColor::fromRgbF(1, 0.6, 0.2, 0.4);
    EXPECT_TRUE(_program->setUniform("aVec4", color));
    EXPECT_THAT(floats("aVec4", 4),
                ElementsAre(1, float(color.greenF()), float(color.blueF()), float(color.alphaF())));
    EXPECT_TRUE(_program->setUniform("aVec3", QColor::fromHsv(240, 255, 255)));
    EXPECT_THAT(floats("aVec3", 3), ElementsAre(0, 0, 1));
}

TEST_P(UniformsTest, ElementsOfListsAreNamed) {
    for (const auto& [name, value] : {std::pair("list", 1.0F), std::pair("list[2]", 3.0F)}) {
        EXPECT_TRUE(_program->setUniform(name, value)) << name;
        EXPECT_THAT(floats(name, 1), ElementsAre(value));
    }
    EXPECT_TRUE(_program->setUniform("lights[1].color", QVector3D(1, 2, 3)));
    EXPECT_THAT(floats("lights[1].color", 3), ElementsAre(1, 2, 3));
    MessageLog log;
    EXPECT_FALSE(_program->setUniform("list[3]", 1.0F));
    EXPECT_FALSE(_program->setUniform("list[", 1.0F));
    EXPECT_FALSE(_program->setUniform("]", 1.0F));
    EXPECT_FALSE(_program->setUniform("", 1.0F));
}

TEST_P(UniformsTest, NameIsLookedUpOnce) {
    UniformQueries::callOnce(_program->name());
    const UniformQueries queries;
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(_program->setUniform("aFloat", float(i)));
    EXPECT_EQ(queries.count(), 2) << "its location and its type";
    MessageLog log;
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(_program->setUniform("nowhere", float(i)));
    EXPECT_EQ(queries.count(), 4);
}

TEST_P(UniformsTest, UnknownNameIsReportedOnce) {
    MessageLog log;
    for (int i = 0; i < 2; ++i) {
        EXPECT_FALSE(_program->setUniform("nowhere", 1));
        EXPECT_FALSE(_program->setUniform("neither", QColor(Qt::red)));
    }
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre("Program 'glass' does not use a uniform 'nowhere'",
                                                     "Program 'glass' does not use a uniform 'neither'"));
}

TEST_P(UniformsTest, ValueOfAnotherTypeIsReportedOnce) {
    MessageLog log;
    for (int i = 0; i < 2; ++i) {
        EXPECT_FALSE(_program->setUniform("aFloat", 1));
        EXPECT_FALSE(_program->setUniform("anInt", 1.0F));
        EXPECT_FALSE(_program->setUniform("aVec3", QVector4D()));
        EXPECT_FALSE(_program->setUniform("aVec4", QVector3D()));
        EXPECT_FALSE(_program->setUniform("aVec2", QColor()));
        EXPECT_FALSE(_program->setUniform("aVec2", QMatrix4x4()));
        EXPECT_FALSE(_program->setUniform("aMat4", QVector2D()));
        EXPECT_FALSE(_program->setUniform("pair", 1));
        EXPECT_FALSE(_program->setUniform("aUint", -1));
    }
    ASSERT_EQ(log.texts(QtWarningMsg).size(), 8U) << "aVec2 once";
    EXPECT_EQ(log.texts(QtWarningMsg)[0], "Uniform of program 'glass' does not take such a value: 'aFloat'");
    EXPECT_TRUE(_program->setUniform("aFloat", 1.0F)) << "a later value may suit";
}

TEST_P(UniformsTest, NothingElseChanges) {
    const BusyClient client;
    const ClientState before = ClientState::captured();
    EXPECT_TRUE(_program->setUniform("aFloat", 1.0F));
    EXPECT_TRUE(_program->setUniform("anInt", 1));
    EXPECT_TRUE(_program->setUniform("aVec4", QColor(Qt::red)));
    EXPECT_TRUE(_program->setUniform("aMat4", QMatrix4x4()));
    EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "");
}

TEST_P(UniformsTest, OtherContextsSetNothing) {
    const auto unrelated = makeContext(options());
    unrelated->makeCurrent();
    watchMessages();
    const auto expectRefused = [this] {
        EXPECT_FALSE(_program->setUniform("anInt", 1));
        EXPECT_FALSE(_program->setUniform("aFloat", 1.0F));
        EXPECT_FALSE(_program->setUniform("aVec2", QVector2D()));
        EXPECT_FALSE(_program->setUniform("aVec3", QVector3D()));
        EXPECT_FALSE(_program->setUniform("aVec4", QVector4D()));
        EXPECT_FALSE(_program->setUniform("aVec4", QColor()));
        EXPECT_FALSE(_program->setUniform("aMat4", QMatrix4x4()));
    };
    expectRefused();
    unrelated->doneCurrent();
    expectRefused();
    _context->makeCurrent();
}

} // namespace Atelier::Vel::Testing
