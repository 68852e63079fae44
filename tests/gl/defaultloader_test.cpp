#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velgl/texture.h>
#include <velgl/texturemanager.h>
#include <velmodel/modelbuilder.h>
#include <velmodel/objloader.h>
#include <velmodel/textureloader.h>

#include "support/glfixture.h"
#include "support/messagelog.h"

// The loader is one for the process, so each of these tests needs a process of its own, as in ctest.
namespace Atelier::Vel {

namespace {

class DefaultLoaderTest : public Testing::GLFixture {
protected:
    void SetUp() override {
        GLFixture::SetUp();
        QImage image(4, 2, QImage::Format_RGB32);
        image.fill(Qt::red);
        ASSERT_TRUE(image.save(picture()));
        QFile file(objFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    }

    QString picture() const { return _folder.filePath("picture.png"); }
    QString objFile() const { return _folder.filePath("triangle.obj"); }

    void load() const {
        QString error;
        const std::unique_ptr<GPUModel> model(loadModelFromOBJFile(objFile(), error));
        EXPECT_TRUE(model && model->drawableCount() == 1) << error.toStdString();
    }
    DrawData drawData() const {
        QString error;
        return readDrawDataFromOBJFile(objFile(), error);
    }

private:
    QTemporaryDir _folder;
};

} // namespace

TEST_F(DefaultLoaderTest, FirstUploadInstallsLoadTexture) {
    GPUModel model;
    EXPECT_EQ(TextureManager::Instance().texture(picture(), nullptr), nullptr);
    const Testing::MessageLog log;
    EXPECT_TRUE(upload(drawData(), model, {makeIdentityInstance()}));
    Texture* const texture = TextureManager::Instance().texture(picture(), nullptr);
    ASSERT_NE(texture, nullptr) << "the path was not tried again";
    EXPECT_EQ(texture, LoadTexture(picture()));
    EXPECT_EQ(texture->readBack().pixelColor(0, 0), QColor(Qt::red));
    EXPECT_THAT(log.texts(QtWarningMsg), testing::IsEmpty());
}

TEST_F(DefaultLoaderTest, FirstLoadInstallsLoadTexture) {
    load();
    Texture* const texture = TextureManager::Instance().texture(picture(), nullptr);
    EXPECT_NE(texture, nullptr);
    EXPECT_EQ(texture, LoadTexture(picture()));
}

TEST_F(DefaultLoaderTest, FirstUploadOfABuilderInstallsLoadTexture) {
    const float positions[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const unsigned int corners[] = {0, 1, 2};
    const unsigned int cornerCount = 3;
    const unsigned int face = 0;
    ModelBuilder builder;
    builder.createVertexAttribute("va_Vertex", 3, 0x1406, 0, 0);
    builder.addValuesToVertexAttribute("va_Vertex", 9, positions, 0x1406);
    builder.addIndicesToVertexAttribute("va_Vertex", 3, corners);
    builder.addVertexCountsToFaces(1, &cornerCount);
    builder.createMaterialGroup("grey", makeDefaultMaterial(), -1, 0);
    builder.addFacesToMaterialGroup("grey", 1, &face, QString());
    GPUModel model;
    builder.upload(&model, makeIdentityInstance(), "va_Vertex", QString(), 0x88E4, 4);
    ASSERT_EQ(model.drawableCount(), 1);
    Texture* const texture = TextureManager::Instance().texture(picture(), nullptr);
    EXPECT_NE(texture, nullptr);
    EXPECT_EQ(texture, LoadTexture(picture()));
}

TEST_F(DefaultLoaderTest, LoaderOfTheClientStays) {
    const std::unique_ptr<Texture> blue = Texture::ofColor(Qt::blue);
    TextureManager::Instance().setLoader([&](const QString& /*path*/) { return blue.get(); });
    load();
    EXPECT_EQ(TextureManager::Instance().texture(picture(), nullptr), blue.get());
    TextureManager::Instance().setLoader({});
}

TEST_F(DefaultLoaderTest, NoLoaderIsInstalledIfTheClientSetNone) {
    TextureManager::Instance().setLoader({});
    load();
    EXPECT_EQ(TextureManager::Instance().texture(picture(), nullptr), nullptr);
}

} // namespace Atelier::Vel
