// Textures that are decoded on another thread and handed to OpenGL in portions.
#include <epoxy/gl.h>

#include <velmodel/decodedtextures.h>

#include <future>
#include <limits>

#include <malloc.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velgl/glentrypoints.h>
#include <velgl/texture.h>
#include <velmodel/drawdata.h>
#include <velmodel/objloader.h>

#include "entrypointlog.h"
#include "support/messagelog.h"
#include "support/sanitizer.h"
#include "texturefixture.h"

namespace Atelier::Vel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;

std::size_t allocatedBytes() {
    const struct mallinfo2 blocks = mallinfo2();
    return blocks.uordblks + blocks.hblkhd;
}

const HandOverBudget kEverything = {std::numeric_limits<qint64>::max(), std::numeric_limits<int>::max()};

class DecodedTexturesTest : public TextureFixture {
protected:
    /// Saves images of 4 x 4 pixels, 64 bytes each, and of different colours.
    QStringList saveMany(int count) const {
        QStringList paths;
        for (int i = 0; i < count; ++i) {
            QImage image(4, 4, QImage::Format_ARGB32);
            image.fill(QColor(i, 0, 0));
            paths << save(image, QStringLiteral("%1.png").arg(i));
        }
        return paths;
    }
    /// Decodes on another thread.
    static DecodedTextures decoded(const QStringList& paths, const TextureOptions& options = {}) {
        return std::async(std::launch::async,
                          [&] {
                              DecodedTextures textures(ModelFiles(), options);
                              EXPECT_TRUE(textures.decode(paths));
                              return textures;
                          })
            .get();
    }
    /// The first colour of each image that one call stores, as the number of saveMany().
    static QList<int> imagesOf(DecodedTextures& textures, const HandOverBudget& budget) {
        static QList<int> stored;
        stored.clear();
        const GLEntryPoints real = glEntryPoints();
        glEntryPoints().texImage2D = [](unsigned int, int, int, int, int, int, unsigned int, unsigned int,
                                        const void* pixels) {
            stored << qRed(*static_cast<const QRgb*>(pixels));
        };
        const MessageLog log; // of images that are not stored
        textures.handOver(budget);
        glEntryPoints() = real;
        return stored;
    }
};

} // namespace

TEST_F(DecodedTexturesTest, TexturesAreThoseOfTheModelsLoader) {
    const TextureOptions options{TextureOptions::ColorSpace::SRgb, 4};
    for (const char* name : {"a.png", "b.bmp", "c.ppm", "d.jpg"}) {
        const QString file = save(numbered(5, 3, QImage::Format_RGB32), QString::fromLatin1(name));
        EntryPointLog log;
        const std::shared_ptr<Texture> expected = makeTextureLoader(ModelFiles(), options)(file);
        ASSERT_NE(expected, nullptr) << name;
        const QStringList calls = log.calls;
        log.calls.clear();
        DecodedTextures textures = decoded({file}, options);
        EXPECT_THAT(log.calls, IsEmpty()) << "no OpenGL on the other thread";
        EXPECT_EQ(textures.handOver(), 0);
        EXPECT_EQ(log.calls, calls) << name;
        const std::shared_ptr<Texture> texture = textures.loader()(file);
        ASSERT_NE(texture, nullptr) << name;
        EXPECT_EQ(texture->readBack(), expected->readBack()) << name;
        EXPECT_EQ(texture->readBack(1), expected->readBack(1)) << name;
        EXPECT_EQ(QSize(texture->width(), texture->height()), QSize(5, 3)) << name;
        EXPECT_EQ(texture->internalFormat(), GL_SRGB8_ALPHA8) << name;
        EXPECT_TRUE(texture->isReadOnly()) << name;
    }
}

TEST_F(DecodedTexturesTest, ModelIsWhiteUntilItsTextureIsHandedOver) {
    saveColor(Qt::red, "a.png");
    loadTriangle("a.png");
    QString error;
    DrawData data = readDrawDataFromOBJFile(path("m.obj"), error);
    DecodedTextures textures = decoded(data.texturePaths());
    ASSERT_EQ(textures.waitingCount(), 1);
    GPUModel model;
    ASSERT_TRUE(upload(std::move(data), model, {makeIdentityInstance()}));
    model.setTextureLoader(textures.loader());
    const MessageLog log;
    for (int frame = 0; frame < 2; ++frame)
        EXPECT_EQ(drawn(model), QColor(Qt::white));
    ASSERT_TRUE(QFile::remove(path("a.png")));
    EXPECT_EQ(textures.handOver(), 0);
    for (int frame = 0; frame < 2; ++frame)
        EXPECT_EQ(drawn(model), QColor(Qt::red));
    EXPECT_EQ(textures.loader()(path("a.png"))->label(), path("a.png"));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_F(DecodedTexturesTest, TexturesMayBeHandedOverBeforeTheLoaderIsSet) {
    saveColor(Qt::red, "a.png");
    const std::unique_ptr<GPUModel> model = loadTriangle("a.png");
    const std::unique_ptr<GPUModel> second = loadTriangle("a.png");
    {
        DecodedTextures textures = decoded({path("a.png")});
        EXPECT_EQ(textures.handOver(), 0);
        ASSERT_TRUE(QFile::remove(path("a.png")));
        model->setTextureLoader(textures.loader());
        second->setTextureLoader(textures.loader());
    }
    EXPECT_EQ(drawn(*model), QColor(Qt::red)) << "the loader outlives the object";
    EXPECT_EQ(drawn(*second), QColor(Qt::red)) << "both models have the same texture";
}

TEST_F(DecodedTexturesTest, PortionsFollowTheOrderAndTheBudget) {
    constexpr qint64 kBytes = 64; // of an image
    const QStringList paths = saveMany(7);
    DecodedTextures textures = decoded(paths);
    textures.loader()(paths[5]); // does not change the order
    EXPECT_EQ(imagesOf(textures, {kEverything.bytes, 2}), QList<int>({0, 1}));
    EXPECT_EQ(imagesOf(textures, {2 * kBytes, kEverything.images}), QList<int>({2, 3}));
    EXPECT_EQ(imagesOf(textures, {2 * kBytes - 1, kEverything.images}), QList<int>({4}));
    EXPECT_EQ(textures.waitingCount(), 2);
    EXPECT_EQ(imagesOf(textures, {0, 0}), QList<int>({5})) << "at least one";
    EXPECT_EQ(imagesOf(textures, kEverything), QList<int>({6}));
    EXPECT_EQ(imagesOf(textures, kEverything), QList<int>());
    EXPECT_EQ(textures.waitingCount(), 0);
}

TEST_F(DecodedTexturesTest, ResultOfEachPortionIsWhatStillWaits) {
    DecodedTextures textures = decoded(saveMany(3));
    EXPECT_EQ(textures.handOver({kEverything.bytes, 1}), 2);
    EXPECT_EQ(textures.handOver({kEverything.bytes, 1}), 1);
    EXPECT_EQ(textures.handOver({kEverything.bytes, 1}), 0);
    EXPECT_EQ(textures.handOver({kEverything.bytes, 1}), 0);
}

TEST_F(DecodedTexturesTest, ProgressCountsTheBytesThatStillWait) {
    const QStringList paths = saveMany(3);
    DecodedTextures textures = decoded({paths[0], paths[1]});
    textures.handOver({kEverything.bytes, 1});
    QList<qint64> bytes;
    textures.decode(paths, [&](const DecodeStep& step) {
        bytes << step.bytes;
        return true;
    });
    EXPECT_EQ(bytes, QList<qint64>({64, 128}));
}

TEST_F(DecodedTexturesTest, HandOverLeavesTheStateOfTheClient) {
    DecodedTextures textures = decoded(saveMany(1));
    Texture clients(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr);
    clients.bind();
    glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
    textures.handOver();
    GLint alignment = 0;
    GLint bound = 0;
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    EXPECT_EQ(alignment, 8);
    EXPECT_EQ(GLuint(bound), clients.name());
    clients.unbind();
}

// The stored images take no memory here, so that only the decoded ones count.
TEST_F(DecodedTexturesTest, MemoryOfAnImageIsFreedWhenItIsHandedOver) {
    if (VELMODEL_ADDRESS_SANITIZER != 0)
        GTEST_SKIP() << "the sanitizer has an allocator of its own";
    constexpr std::size_t kBytes = std::size_t(4) * 2048 * 2048;
    constexpr std::size_t kObjectBytes = 100'000; // at most, of a new texture without an image
    QStringList paths;
    for (const char* name : {"a.png", "b.png"})
        paths << save(QImage(2048, 2048, QImage::Format_Mono), name);
    DecodedTextures textures = decoded(paths);
    for (int left = 1; left >= 0; --left) {
        const std::size_t before = allocatedBytes();
        EXPECT_THAT(imagesOf(textures, {0, 1}), testing::SizeIs(1));
        EXPECT_EQ(textures.waitingCount(), left);
        EXPECT_GT(before, allocatedBytes() + kBytes - kObjectBytes);
    }
}

TEST_F(DecodedTexturesTest, SideAboveTheDriversLimitIsTreatedAsUnreadable) {
    save(numbered(16, 2), "fits.png");
    save(numbered(17, 2), "wide.png");
    save(numbered(2, 17), "high.png");
    for (const bool isDrawnFirst : {true, false}) {
        DecodedTextures textures = decoded({path("wide.png"), path("fits.png"), path("high.png")});
        EXPECT_EQ(textures.waitingCount(), 3);
        EntryPointLog log;
        log.integers[GL_MAX_TEXTURE_SIZE] = 16;
        const GPUModel::TextureLoader load = textures.loader();
        for (int round = 0; round < 2; ++round) {
            if (isDrawnFirst || round == 1) {
                EXPECT_EQ(load(path("wide.png")), nullptr);
                EXPECT_EQ(load(path("high.png")), nullptr);
                EXPECT_NE(load(path("fits.png")), nullptr);
            }
            EXPECT_EQ(textures.handOver(), 0);
        }
        EXPECT_EQ(log.calls.filter(QStringLiteral("texImage2D")).size(), 1);
    }
}

TEST_F(DecodedTexturesTest, FileThatCannotBeDecodedIsReportedAndNotReadAgain) {
    const std::unique_ptr<GPUModel> model = loadTriangle("a.png");
    DecodedTextures textures = decoded({path("a.png")});
    EXPECT_EQ(textures.waitingCount(), 0);
    saveColor(Qt::red, "a.png");
    model->setTextureLoader(textures.loader());
    const MessageLog log;
    for (int frame = 0; frame < 2; ++frame)
        EXPECT_EQ(drawn(*model), QColor(Qt::white));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("Texture '%1' cannot be loaded").arg(path("a.png"))));
}

TEST_F(DecodedTexturesTest, PathsThatWereNotDecodedAreLoadedAtOnce) {
    saveColor(Qt::red, "a.png");
    const TextureOptions options{TextureOptions::ColorSpace::SRgb};
    const QTemporaryDir elsewhere;
    const DecodedTextures textures(ModelFiles(path({})), options);
    const std::shared_ptr<Texture> texture = textures.loader()(path("a.png"));
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(texture->internalFormat(), GL_SRGB8_ALPHA8);
    EXPECT_EQ(texture->readBack().pixelColor(0, 0), QColor(Qt::red));
    const DecodedTextures confined((ModelFiles(elsewhere.path())));
    EXPECT_EQ(confined.loader()(path("a.png")), nullptr);
}

TEST_F(DecodedTexturesTest, FurtherContextReadsTheFileAfterTheHandOver) {
    saveColor(Qt::red, "a.png");
    DecodedTextures textures = decoded({path("a.png")});
    const std::shared_ptr<Texture> texture = textures.loader()(path("a.png"));
    ASSERT_NE(texture, nullptr);
    const auto colorHere = [&] {
        EXPECT_TRUE(texture->bind());
        texture->unbind();
        return texture->readBack().pixelColor(0, 0);
    };
    const auto other = makeContext(options());
    other->makeCurrent();
    watchMessages();
    EXPECT_FALSE(texture->bind()) << "nothing is made before";
    texture->unbind();
    _context->makeCurrent();
    textures.handOver();
    EXPECT_EQ(colorHere(), QColor(Qt::red));
    saveColor(Qt::green, "a.png");
    other->makeCurrent();
    const MessageLog log;
    EXPECT_EQ(colorHere(), QColor(Qt::green));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
    _context->makeCurrent();
    EXPECT_EQ(colorHere(), QColor(Qt::red));
}

TEST_F(DecodedTexturesTest, ImagesWaitForAContext) {
    DecodedTextures textures = decoded(saveMany(1));
    _context->doneCurrent();
    EXPECT_EQ(textures.handOver(), 1);
    _context->makeCurrent();
    EXPECT_EQ(textures.handOver(), 0);
}

} // namespace Atelier::Vel
