#include <epoxy/gl.h>

#include <velgl/shaderinterface.h>

#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>
#include <velgl/program.h>

#include "glslwords.h"
#include "support/glfixture.h"

// Whatever the members of a plan are called, the driver compiles the declarations.
namespace Atelier::Vel::Testing {

namespace {

using DataType = InstanceDataPlan::DataType;

const QStringList kOddNames = {QString(),
                               QStringLiteral("2nd"),
                               QStringLiteral("gl_Position"),
                               QStringLiteral("GL_core_profile"),
                               QStringLiteral("__LINE__"),
                               QStringLiteral("__FILE__"),
                               QStringLiteral("__VERSION__"),
                               QStringLiteral("a__b"),
                               QStringLiteral("__"),
                               QStringLiteral("in_"),
                               QStringLiteral("_in"),
                               QString::fromUtf8("größe"),
                               QStringLiteral("my map.1")};

// OpenGL 4.3 guarantees this number of textures in a stage.
constexpr int kMinTextures = 16;

class ShaderNamesTest : public GLFixture {
protected:
    /// Registers a plan with one value and one texture for each name.
    static QString planOf(const QStringList& values, const QStringList& textures) {
        static int count = 0;
        auto* plan = new InstanceDataPlan(QStringLiteral("Names%1").arg(count++));
        for (const QString& name : values)
            plan->addMember(DataType::Float, name);
        for (const QString& name : textures)
            plan->addMember(DataType::Texture, name);
        const QString name = plan->name();
        InstanceDataRegistry::Instance().registerPlan(plan);
        return name;
    }

    /// Compiles shaders that read all of the values and textures, by the names that glslName() returns.
    static void expectUsable(const QStringList& values, const QStringList& textures) {
        const ShaderPlans plans{planOf({}, textures), planOf(values, {})};
        QByteArray sum = "0.0";
        for (const QString& value : values)
            sum += " + velglInstance(0)." + InstanceDataPlan::glslName(value).toLatin1();
        for (const QString& texture : textures) {
            const QByteArray name = InstanceDataPlan::glslName(texture).toLatin1();
            sum += " + (velglHas_" + name + "() ? texture(velgl_" + name + ", vec2(0.5)).x : 0.0)";
        }
        const QByteArray newest = epoxy_gl_version() >= 46 ? "460" : "430";
        for (const QByteArray& number : {QByteArray("430"), newest}) {
            const QByteArray version = "#version " + number + " core\n";
            QString error;
            EXPECT_TRUE(Program::fromSource(version + shaderInterface(ShaderStage::Vertex, plans) +
                                                "void main() { gl_Position = vec4(" + sum + "); }\n",
                                            version + shaderInterface(ShaderStage::Fragment, plans) +
                                                "out vec4 pixel;\nvoid main() { pixel = vec4(" + sum +
                                                "); }\n",
                                            error))
                << error.toStdString();
        }
    }
};

} // namespace

TEST_F(ShaderNamesTest, ValuesAndTexturesMayHaveTheNamesOfGlslWords) {
    const QStringList words = glslWords();
    for (int first = 0; first < words.size(); first += kMinTextures)
        expectUsable(words.mid(first, kMinTextures), words.mid(first, kMinTextures));
}

// Drivers may warn of "__", which layers below them may use, but they accept it.
TEST_F(ShaderNamesTest, OddNamesAreUsable) {
    expectUsable(kOddNames, kOddNames);
    takeSevereMessages();
}

// The driver is asked about words that are no keywords in OpenGL as well.
TEST_F(ShaderNamesTest, EachWordThatTheDriverRefusesIsChanged) {
    const QStringList others = {
        "texture",      "mix",          "sampler",   "texture2D", "subpassInput",
        "std140",       "column_major", "location",  "binding",   "offset",
        "align",        "points",       "triangles", "vertices",  "early_fragment_tests",
        "local_size_x", "index",        "component", "defined",   "define",
        "packed",       "row_major",    "std430",    "main",      "abs",
        "main",         "gl",           "e",         "Float",     "vec5"};
    QStringList refused;
    QStringList kept;
    for (const QString& word : glslWords() + others) {
        QString error;
        if (!Program::fromSource("#version 430 core\nvoid main() { gl_Position = vec4(0.0); }\n",
                                 "#version 430 core\nstruct Item { float " + word.toLatin1() +
                                     "; };\nout vec4 pixel;\nvoid main() { pixel = vec4(1.0); }\n",
                                 error)) {
            refused << word;
            if (InstanceDataPlan::glslName(word) == word)
                kept << word;
        }
    }
    EXPECT_GT(refused.size(), 100);
    EXPECT_EQ(kept, QStringList());
    takeSevereMessages();
}

} // namespace Atelier::Vel::Testing
