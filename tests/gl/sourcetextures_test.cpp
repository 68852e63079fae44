// Textures from sources other than files.
#include <velmodel/textureloader.h>

#include <memory>
#include <stdexcept>

#include <QtCore/QBuffer>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velgl/texture.h>
#include <velmodel/modelsource.h>
#include <velmodel/objloader.h>

#include "support/clientsource.h"
#include "support/messagelog.h"
#include "texturefixture.h"

namespace Atelier::Vel {

namespace {

using Testing::ClientSource;
using Testing::MessageLog;

QByteArray picture(const char* format = "PNG") {
    QImage image(3, 2, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(image.save(&buffer, format));
    return bytes;
}

/// A source with a triangle that fills the picture, and a red texture.
class SourceTexturesTest : public TextureFixture {
protected:
    SourceTexturesTest() {
        _source->files = {{"in/model.obj", "mtllib lib.mtl\nusemtl red\nv -1 -1 0\nv 3 -1 0\nv -1 3 0\n"
                                           "f 1 2 3\n"},
                          {"in/lib.mtl", "newmtl red\nmap_Kd maps\\red.png\n"},
                          {"in/maps/red.png", picture()}};
    }
    std::shared_ptr<Texture> load(const QString& name = "in/maps/red.png") const {
        return makeTextureLoader(_source)(name);
    }

    std::shared_ptr<ClientSource> _source = std::make_shared<ClientSource>();
};

} // namespace

TEST_F(SourceTexturesTest, ModelIsDrawnWithTheTexturesOfItsSource) {
    for (const bool isSequential : {false, true}) {
        _source->behaviour.isSequential = isSequential;
        _source->behaviour.mustBeWaitedFor = isSequential;
        QString error;
        const std::unique_ptr<GPUModel> model = loadModelFromOBJ(_source, "in/model.obj", error);
        ASSERT_NE(model, nullptr) << error.toStdString();
        EXPECT_EQ(drawn(*model), QColor(Qt::red));
    }
}

TEST_F(SourceTexturesTest, TextureIsOpenedWhenItIsDrawnAndOnce) {
    QString error;
    const std::unique_ptr<GPUModel> model = loadModelFromOBJ(_source, "in/model.obj", error);
    ASSERT_NE(model, nullptr) << error.toStdString();
    EXPECT_EQ(_source->opened, QStringList({"in/model.obj", "in/lib.mtl"}));
    _source->opened.clear();
    drawn(*model);
    drawn(*model);
    EXPECT_EQ(_source->opened, QStringList({"in/maps\\red.png", "in/maps/red.png"}));
}

TEST_F(SourceTexturesTest, MissingTextureIsWhite) {
    _source->files.remove("in/maps/red.png");
    QString error;
    const std::unique_ptr<GPUModel> model = loadModelFromOBJ(_source, "in/model.obj", error);
    ASSERT_NE(model, nullptr) << error.toStdString();
    const MessageLog log;
    EXPECT_EQ(drawn(*model), QColor(Qt::white));
    EXPECT_EQ(load("no.png"), nullptr);
}

TEST_F(SourceTexturesTest, AnyOpenDeviceIsRead) {
    ASSERT_TRUE(picture().contains("\r\n")) << "bytes that text mode changes";
    for (const bool isSequential : {false, true})
        for (const QIODevice::OpenMode mode :
             {QIODevice::OpenMode(QIODevice::ReadOnly), QIODevice::ReadOnly | QIODevice::Text}) {
            _source->behaviour.isSequential = isSequential;
            _source->behaviour.mode = mode;
            const std::shared_ptr<Texture> texture = load();
            ASSERT_NE(texture, nullptr);
            EXPECT_EQ(QSize(texture->width(), texture->height()), QSize(3, 2));
        }
    _source->behaviour.mode = QIODevice::NotOpen;
    EXPECT_EQ(load(), nullptr);
}

TEST_F(SourceTexturesTest, DamagedAndForeignDataAreNoTextures) {
    _source->files["cut.png"] = picture().left(60);
    _source->files["empty.png"] = "";
    _source->files["picture.svg"] = "<svg xmlns='http://www.w3.org/2000/svg' width='4' height='4'/>";
    for (const bool isSequential : {false, true}) {
        _source->behaviour.isSequential = isSequential;
        for (const char* name : {"cut.png", "empty.png", "picture.svg", "in/lib.mtl"})
            EXPECT_EQ(load(name), nullptr) << name;
        _source->behaviour.failsAt = 50;
        EXPECT_EQ(load(), nullptr);
        _source->behaviour.failsAt = -1;
    }
}

TEST_F(SourceTexturesTest, ExceptionsPassThrough) {
    _source->files["in/maps/red.jpg"] = picture("JPG");
    _source->behaviour.mostPerRead = 50;
    for (const bool isSequential : {false, true})
        for (const qint64 good : {0, 30, 60})
            for (const char* name : {"in/maps/red.png", "in/maps/red.jpg"}) {
                _source->behaviour.isSequential = isSequential;
                _source->behaviour.beforeRead = [good](qint64 position) {
                    if (position >= good)
                        throw std::runtime_error("lost");
                };
                EXPECT_THROW(load(name), std::runtime_error) << good;
            }
}

// Decoders would believe both.
TEST_F(SourceTexturesTest, ShortReadsAndWrongSizesDoNotMatter) {
    _source->behaviour.mostPerRead = 7;
    for (const qint64 claimed : {-1, 0, 10, 1'000'000}) {
        _source->behaviour.claimedBytes = claimed;
        EXPECT_NE(load(), nullptr) << claimed;
    }
}

TEST_F(SourceTexturesTest, LoaderKeepsItsSource) {
    const std::weak_ptr<ClientSource> watched = _source;
    auto loader = makeTextureLoader(_source);
    _source.reset();
    EXPECT_NE(loader("in/maps/red.png"), nullptr);
    loader = nullptr;
    EXPECT_TRUE(watched.expired());
}

} // namespace Atelier::Vel
