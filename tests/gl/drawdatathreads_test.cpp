// Threads read files while the thread of the context uploads, draws and destroys what they read.
#include <epoxy/gl.h>

#include <velmodel/objloader.h>

#include <algorithm>
#include <cmath>
#include <future>
#include <memory>
#include <vector>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/gpumodel.h>
#include <velgl/texturemanager.h>
#include <velmodel/textureloader.h>

#include "support/glfixture.h"
#include "support/messagelog.h"
#include "support/modelprogram.h"
#include "support/scale.h"

namespace Atelier::Vel {

namespace {

using Testing::Framebuffer;
using testing::IsEmpty;
using Testing::MessageLog;

constexpr int kThreads = 4;
constexpr int kPictureSide = 64;
constexpr int kStripes = 20; // materials of the generated model

constexpr char kVertexShader[] = R"(
in vec3 va_Vertex;
in vec3 va_Normal;
in vec2 va_TexCoord;
uniform vec3 centre;
uniform float scale;
out vec3 normal;
out vec2 texCoord;
flat out int command;
void main() {
    normal = va_Normal;
    texCoord = va_TexCoord;
    command = velglCommand();
    gl_Position = velglInstance(command).ModelMatrix * vec4((va_Vertex - centre) * scale, 1.0);
})";

constexpr char kFragmentShader[] = R"(
in vec3 normal;
in vec2 texCoord;
flat in int command;
out vec4 colour;
void main() {
    colour = vec4(velglMaterial(command).Kd * (0.5 + 0.5 * abs(normal)), 1.0);
    if (velglHas_map_Kd())
        colour *= texture(velgl_map_Kd, texCoord);
})";

std::unique_ptr<Program> makeProgram() {
    return Testing::makeModelProgram(kVertexShader, kFragmentShader);
}

QByteArray stripeMaterials() {
    QByteArray text;
    for (int stripe = 0; stripe < kStripes; ++stripe)
        text +=
            "newmtl stripe" + QByteArray::number(stripe) + "\nKd 1 0." + QByteArray::number(stripe) + " 1\n";
    return text;
}

/// A wavy square without normals; its rows of quadrilaterals use the materials in turn.
QByteArray wavySquare() {
    constexpr int kCells = 60;
    QByteArray text = "mtllib stripes.mtl\n";
    for (int row = 0; row <= kCells; ++row)
        for (int column = 0; column <= kCells; ++column)
            text += QStringLiteral("v %1 %2 %3\n")
                        .arg(column)
                        .arg(row)
                        .arg(std::sin(0.3 * row * column))
                        .toUtf8();
    for (int row = 0; row < kCells; ++row) {
        text += "usemtl stripe" + QByteArray::number(row % kStripes) + '\n';
        for (int column = 1; column <= kCells; ++column) {
            const int below = row * (kCells + 1) + column;
            const int above = below + kCells + 1;
            text += QStringLiteral("f %1 %2 %3 %4\n")
                        .arg(below)
                        .arg(below + 1)
                        .arg(above + 1)
                        .arg(above)
                        .toUtf8();
        }
    }
    return text;
}

DrawData read(const QString& path) {
    QString error;
    DrawData data = readDrawDataFromOBJFile(path, error);
    EXPECT_FALSE(data.isNull()) << error.toStdString();
    return data;
}

/// The sums of the indices and of the bytes of the attributes, and the names of the groups.
QByteArray contentOf(const DrawData& data) {
    const DrawData::Indices indices = data.indices();
    quint64 sum = 0;
    for (quint64 i = 0; i < indices.count; ++i)
        sum = 31 * sum + indices.data[i];
    for (const DrawData::Attribute& attribute : data.attributes())
        for (quint64 i = 0; i < attribute.bytes; ++i)
            sum = 31 * sum + static_cast<const unsigned char*>(attribute.data)[i];
    QByteArray content = QByteArray::number(sum);
    for (int drawable = 0; drawable < data.drawableCount(); ++drawable)
        for (int command = 0; command < data.commandCount(drawable); ++command)
            content += ' ' + data.group(drawable, command).name.toUtf8() +
                       QByteArray::number(data.commandBox(drawable, command).maximum.x());
    return content;
}

int shownPixels(const QImage& picture) {
    int shown = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            shown += picture.pixelColor(x, y) == QColor(Qt::black) ? 0 : 1;
    return shown;
}

class DrawDataThreadsTest : public Testing::GLFixture {
protected:
    /// A file, and what a single thread makes of it.
    struct Model {
        QString path;
        int commands = 0;
        QByteArray content;
        QImage picture;
    };

    void SetUp() override {
        GLFixture::SetUp();
        ASSERT_TRUE(OpenGLDeviceContext::current());
        TextureManager::Instance().setLoader(LoadTexture);
        _program = makeProgram();
        ASSERT_TRUE(_program);
        write("stripes.mtl", stripeMaterials());
        write("stripes.obj", wavySquare());
        for (const char* name : {"gear", "mosaic", "showpiece", "stairs", "vase"})
            addSample(QString::fromLatin1(name));
        addModel(_folder.filePath("stripes.obj"));
        ASSERT_EQ(_models.back().commands, kStripes);
    }
    void TearDown() override {
        TextureManager::Instance().setLoader({});
        _program.reset();
        GLFixture::TearDown();
    }

    QImage draw(GPUModel& model) const {
        const GPUModel::Bounds bounds = model.bounds();
        const QVector3D centre = (bounds.minimum + bounds.maximum) / 2;
        const AutoBinder binder(_program.get());
        glUniform3f(_program->uniformLocation("centre"), centre.x(), centre.y(), centre.z());
        glUniform1f(_program->uniformLocation("scale"), 1.9F / (bounds.maximum - bounds.minimum).length());
        Framebuffer picture(QSize(kPictureSide, kPictureSide));
        picture.begin();
        glEnable(GL_DEPTH_TEST);
        model.draw();
        return picture.pixels();
    }
    /// Uploads the draw data to a model, draws the model and destroys it.
    QImage uploadAndDraw(DrawData data) const {
        GPUModel model;
        EXPECT_TRUE(upload(std::move(data), model, {makeIdentityInstance()}));
        return draw(model);
    }

    std::vector<Model> _models;

private:
    void write(const QString& name, const QByteArray& text) const {
        QFile file(_folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }
    // Each test has its own copies: LoadTexture() keeps textures by path, even after their context is
    // destroyed.
    void addSample(const QString& name) {
        const QDir samples(QStringLiteral(VELMODEL_SOURCE_DIR "/samples/") + name);
        for (const QString& file : samples.entryList(QDir::Files))
            ASSERT_TRUE(QFile::copy(samples.filePath(file), _folder.filePath(file)));
        addModel(_folder.filePath(name + QStringLiteral(".obj")));
    }
    void addModel(const QString& path) {
        const DrawData data = read(path);
        ASSERT_EQ(data.drawableCount(), 1);
        const Model model{path, data.commandCount(0), contentOf(data), uploadAndDraw(data)};
        ASSERT_GT(shownPixels(model.picture), kPictureSide * kPictureSide / 20) << path.toStdString();
        _models.push_back(model);
    }

    QTemporaryDir _folder;
    std::unique_ptr<Program> _program;
};

/// Reads files one after the other on its own thread. Each result is available as soon as it is read.
class Reader {
public:
    explicit Reader(const std::vector<QString>& paths) {
        for (const QString& path : paths) {
            _reads.emplace_back([path] { return read(path); });
            _results.push_back(_reads.back().get_future());
        }
        _thread = std::async(std::launch::async, [this] {
            for (auto& oneRead : _reads)
                oneRead();
        });
    }
    DrawData result(std::size_t number) { return _results[number].get(); }

private:
    std::vector<std::packaged_task<DrawData()>> _reads;
    std::vector<std::future<DrawData>> _results;
    // Destroyed first, because it is the last member: its destructor waits for the thread, which uses the
    // other members.
    std::future<void> _thread;
};

} // namespace

// In even rounds the threads read different files; in odd rounds all threads read the same file.
TEST_F(DrawDataThreadsTest, ModelsAreDrawnAndDestroyedWhileOthersAreRead) {
    const MessageLog log;
    const std::size_t rounds = static_cast<std::size_t>(Testing::scaled(2)) * _models.size();
    const auto modelOf = [this](std::size_t thread, std::size_t round) -> const Model& {
        return _models[(round / 2 + (round % 2 == 0 ? thread : 0)) % _models.size()];
    };
    std::vector<std::unique_ptr<Reader>> readers;
    for (std::size_t thread = 0; thread < kThreads; ++thread) {
        std::vector<QString> paths;
        for (std::size_t round = 0; round < rounds; ++round)
            paths.push_back(modelOf(thread, round).path);
        readers.push_back(std::make_unique<Reader>(paths));
    }
    for (std::size_t round = 0; round < rounds; ++round)
        for (std::size_t thread = 0; thread < kThreads; ++thread) {
            const Model& expected = modelOf(thread, round);
            DrawData data = readers[thread]->result(round);
            EXPECT_EQ(data.commandCount(0), expected.commands) << expected.path.toStdString();
            EXPECT_EQ(uploadAndDraw(std::move(data)), expected.picture) << expected.path.toStdString();
        }
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_F(DrawDataThreadsTest, DrawDataIsReadWhileItIsDrawn) {
    const MessageLog log;
    for (const Model& expected : _models) {
        const DrawData data = read(expected.path);
        std::vector<std::future<QByteArray>> contents;
        for (int thread = 0; thread < kThreads; ++thread)
            contents.push_back(std::async(std::launch::async, [data] { return contentOf(data); }));
        for (int round = 0; round < Testing::scaled(5); ++round)
            EXPECT_EQ(uploadAndDraw(data), expected.picture) << expected.path.toStdString();
        for (auto& content : contents)
            EXPECT_EQ(content.get(), expected.content);
    }
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

} // namespace Atelier::Vel
