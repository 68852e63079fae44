// The textures of materials: by which loader, and in which contexts.
#include <epoxy/gl.h>

#include <velmodel/textureloader.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velgl/texture.h>
#include <velgl/texturemanager.h>
#include <velmodel/modelfiles.h>
#include <velmodel/objloader.h>

#include "support/messagelog.h"
#include "texturefixture.h"

namespace Atelier::Vel {

namespace {

class MaterialTexturesTest : public TextureFixture {};

} // namespace

// The program of docs/velmodel.md.
TEST_F(MaterialTexturesTest, ConfinedModelIsDrawnWithItsOwnFilesOnly) {
    saveColor(Qt::red, "in.png");
    loadTriangle("in.png");
    const QString path = this->path("m.obj");
    QString error;

    LoadOptions options;
    options.files = LoadOptions::Files::InOwnFolder;
    const std::unique_ptr<GPUModel> model(loadModelFromOBJFile(path, error, options));
    model->setTextureLoader(makeTextureLoader(ModelFiles(QFileInfo(path).path())));

    EXPECT_EQ(drawn(*model), QColor(Qt::red));
    // The picture is replaced after the load by a link that leaves the folder.
    const QTemporaryDir elsewhere;
    QImage secret(2, 2, QImage::Format_ARGB32);
    secret.fill(Qt::green);
    ASSERT_TRUE(secret.save(elsewhere.filePath("secret.png")));
    ASSERT_TRUE(QFile::remove(this->path("in.png")) &&
                QFile::link(elsewhere.filePath("secret.png"), this->path("in.png")));
    model->setTextureLoader(makeTextureLoader(ModelFiles(QFileInfo(path).path())));
    const Testing::MessageLog log;
    EXPECT_EQ(drawn(*model), QColor(Qt::white));
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::Contains(QString("Texture '%1' cannot be loaded").arg(this->path("in.png"))));
}

TEST_F(MaterialTexturesTest, EachCallOfAModelsLoaderMakesATexture) {
    const QString file = save(numbered(4, 2), "a.png");
    const GPUModel::TextureLoader load = makeTextureLoader(ModelFiles());
    const std::shared_ptr<Texture> first = load(file);
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(first->isReadOnly());
    save(numbered(2, 6), "a.png");
    const std::shared_ptr<Texture> second = load(file);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(second, first);
    EXPECT_EQ(QSize(second->width(), second->height()), QSize(2, 6)) << "the picture of the changed file";
    EXPECT_EQ(QSize(first->width(), first->height()), QSize(4, 2));
    EXPECT_EQ(load(path("missing.png")), nullptr);
}

TEST_F(MaterialTexturesTest, ModelsLoaderReadsBackslashesAsSlashes) {
    ASSERT_TRUE(QDir(path(QString())).mkpath("maps/wood"));
    save(numbered(4, 2), "maps/wood/a.png");
    const GPUModel::TextureLoader load = makeTextureLoader(ModelFiles(path(QString())));
    EXPECT_NE(load(path("maps\\wood\\a.png")), nullptr);
    EXPECT_EQ(readTextureSize(ModelFiles(), path("maps\\wood\\a.png")), QSize(4, 2));
    EXPECT_EQ(LoadTexture(path("maps\\wood\\a.png")), nullptr) << "there is no file of this name";
    save(numbered(3, 3), "maps\\wood\\a.png");
    const std::shared_ptr<Texture> exact = load(path("maps\\wood\\a.png"));
    ASSERT_NE(exact, nullptr);
    EXPECT_EQ(exact->width(), 3) << "the file of exactly this name comes first";
}

TEST_F(MaterialTexturesTest, ModelsWithLoadersOfTheirOwnDoNotShareTextures) {
    saveColor(Qt::red, "a.png");
    const std::unique_ptr<GPUModel> first = loadTriangle("a.png");
    first->setTextureLoader(makeTextureLoader(ModelFiles()));
    EXPECT_EQ(drawn(*first), QColor(Qt::red));
    saveColor(Qt::green, "a.png");
    const std::unique_ptr<GPUModel> second = loadTriangle("a.png");
    second->setTextureLoader(makeTextureLoader(ModelFiles()));
    EXPECT_EQ(drawn(*second), QColor(Qt::green)) << "the picture that the file has now";
    EXPECT_EQ(drawn(*first), QColor(Qt::red));
}

TEST_F(MaterialTexturesTest, BackslashesInALibraryAreReadAsSlashes) {
    ASSERT_TRUE(QDir(path(QString())).mkpath("maps"));
    saveColor(Qt::blue, "maps/a.png");
    const Testing::MessageLog log;
    const std::unique_ptr<GPUModel> model = loadTriangle("maps\\a.png");
    EXPECT_EQ(drawn(*model), QColor(Qt::blue)) << "by the loader of the first upload";
    model->setTextureLoader(makeTextureLoader(ModelFiles()));
    EXPECT_EQ(drawn(*model), QColor(Qt::blue));
    EXPECT_THAT(log.texts(QtWarningMsg), testing::IsEmpty());
}

TEST_F(MaterialTexturesTest, TextureIsReadAgainInAnotherContext) {
    const QString file = save(numbered(4, 2), "a.png");
    Texture* const texture = LoadTexture(file);
    ASSERT_NE(texture, nullptr);
    const QImage before = texture->readBack();
    const auto other = makeContext(options());
    other->makeCurrent();
    watchMessages();
    const Testing::MessageLog log;
    glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
    EXPECT_EQ(LoadTexture(file), texture);
    EXPECT_TRUE(texture->bind());
    texture->unbind();
    EXPECT_EQ(texture->readBack(), before);
    EXPECT_EQ(texture->readBack(1).size(), QSize(2, 1));
    GLint alignment = 0;
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    EXPECT_EQ(alignment, 8);
    EXPECT_THAT(log.texts(QtWarningMsg), testing::IsEmpty());
    _context->makeCurrent();
    EXPECT_EQ(texture->readBack(), before);
}

TEST_F(MaterialTexturesTest, TextureWhoseFileIsGoneOrOfAnotherSizeIsWhiteInAnotherContext) {
    for (const bool isGone : {true, false}) {
        const QString file = save(numbered(4, 2), isGone ? "gone.png" : "resized.png");
        Texture* const texture = LoadTexture(file);
        ASSERT_NE(texture, nullptr);
        texture->setLabel(QStringLiteral("map"));
        if (isGone)
            ASSERT_TRUE(QFile::remove(file));
        else
            save(numbered(2, 4), "resized.png");
        const auto other = makeContext(options());
        other->makeCurrent();
        watchMessages();
        const Testing::MessageLog log;
        for (int round = 0; round < 2; ++round) {
            EXPECT_TRUE(texture->bind());
            texture->unbind();
        }
        const QImage content = texture->readBack();
        EXPECT_EQ(content.size(), QSize(1, 1));
        EXPECT_EQ(content.pixelColor(0, 0), QColor(Qt::white));
        EXPECT_THAT(log.texts(QtWarningMsg),
                    testing::ElementsAre(QString(
                        "Texture 'map' could not be filled again in another context; it is white there")));
        _context->makeCurrent();
    }
}

} // namespace Atelier::Vel
