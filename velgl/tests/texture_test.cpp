#include <epoxy/gl.h>

#include <velgl/texture.h>

#include <velgl/autobinder.h>
#include <velgl/glentrypoints.h>

#include "featurefixture.h"
#include "support/messagelog.h"

namespace Atelier::Vel::Testing {

namespace {

class TextureTest : public FeatureFixture {};

GLuint boundTexture() {
    GLint name = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &name);
    return GLuint(name);
}

// Fills the texture through the entry points, as a loader does.
void fill(Texture& texture, const QImage& image) {
    const AutoBinder binder(&texture);
    glEntryPoints().pixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glEntryPoints().texParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 4);
    glEntryPoints().texImage2D(texture.target(), 0, texture.internalFormat(), image.width(), image.height(),
                               0, GL_BGRA, GL_UNSIGNED_BYTE, image.constBits());
    glEntryPoints().generateMipmap(texture.target());
}

QImage checkered() {
    QImage image(3, 5, QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgba(x * 80, y * 50, (x + y) * 30, 255 - x));
    return image;
}

} // namespace

INSTANTIATE_FOR_DRIVERS(TextureTest);

TEST_P(TextureTest, PixelsThroughTheEntryPointsAreReadBack) {
    const QImage image = checkered();
    Texture texture(GL_TEXTURE_2D, GL_RGBA, 3, 5, 0, nullptr);
    fill(texture, image);
    EXPECT_EQ(texture.readBack(), image.convertToFormat(QImage::Format_RGBA8888));
    EXPECT_EQ(texture.readBack(1).size(), QSize(1, 2));
}

TEST_P(TextureTest, EntryPointIgnoresTheClientsUnpackRows) {
    const QImage image = checkered();
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 100);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, 3);
    Texture texture(GL_TEXTURE_2D, GL_RGBA, 3, 5, 0, nullptr);
    fill(texture, image);
    EXPECT_EQ(texture.readBack(), image.convertToFormat(QImage::Format_RGBA8888));
    GLint alignment = 0;
    GLint rowLength = 0;
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    glGetIntegerv(GL_UNPACK_ROW_LENGTH, &rowLength);
    EXPECT_EQ(alignment, 1);
    EXPECT_EQ(rowLength, 100);
    glDeleteBuffers(1, &buffer);
}

TEST_P(TextureTest, PropertiesAreWhatTheConstructorWasGiven) {
    QObject parent;
    auto* texture = new Texture(GL_TEXTURE_3D, GL_R8, 2, 3, 4, &parent);
    EXPECT_EQ(texture->parent(), &parent);
    EXPECT_EQ(texture->target(), unsigned(GL_TEXTURE_3D));
    EXPECT_EQ(texture->internalFormat(), GL_R8);
    EXPECT_EQ(texture->width(), 2);
    EXPECT_EQ(texture->height(), 3);
    EXPECT_EQ(texture->depth(), 4);
    EXPECT_FALSE(texture->isReadOnly());
    texture->setReadOnly();
    EXPECT_TRUE(texture->isReadOnly());
    EXPECT_EQ(texture->name(), 0U);
    EXPECT_TRUE(texture->readBack().isNull());
}

TEST_P(TextureTest, UnbindPutsBackTheTextureOfItsOwnUnit) {
    Texture first(GL_TEXTURE_2D, GL_RGBA, 1, 1, 0, nullptr);
    Texture second(GL_TEXTURE_2D, GL_RGBA, 1, 1, 0, nullptr);
    glActiveTexture(GL_TEXTURE2);
    first.bind();
    second.bind();
    glActiveTexture(GL_TEXTURE5);
    second.unbind();
    GLint active = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    EXPECT_EQ(active, GL_TEXTURE5);
    EXPECT_EQ(boundTexture(), 0U);
    glActiveTexture(GL_TEXTURE2);
    EXPECT_EQ(boundTexture(), first.name());
}

TEST_P(TextureTest, SolidColourFillsItself) {
    const std::unique_ptr<Texture> texture = Texture::ofColor(QColor(10, 20, 30, 40));
    EXPECT_EQ(texture->name(), 0U);
    ASSERT_TRUE(texture->bind());
    texture->unbind();
    EXPECT_EQ(texture->readBack().pixelColor(0, 0), QColor(10, 20, 30, 40));
    EXPECT_TRUE(texture->isReadOnly());
}

TEST_P(TextureTest, LevelsThatDoNotExistReadBackAsNothing) {
    const std::unique_ptr<Texture> texture = Texture::ofColor(Qt::red);
    texture->bind();
    texture->unbind();
    EXPECT_TRUE(texture->readBack(-1).isNull());
    EXPECT_TRUE(texture->readBack(3).isNull());
    EXPECT_TRUE(texture->readBack(1000).isNull());
}

TEST_P(TextureTest, UnknownTargetDoesNotBind) {
    Texture texture(0x1234, GL_RGBA, 1, 1, 0, nullptr);
    EXPECT_FALSE(texture.bind());
    texture.unbind();
}

TEST_P(TextureTest, LabelNamesTheObjectForTheDriver) {
    Texture texture(GL_TEXTURE_2D, GL_RGBA, 1, 1, 0, nullptr);
    texture.setLabel(QStringLiteral("wood"));
    texture.bind();
    texture.unbind();
    char text[32] = {};
    glGetObjectLabel(GL_TEXTURE, texture.name(), sizeof text, nullptr, text);
    EXPECT_STREQ(text, "wood");
}

} // namespace Atelier::Vel::Testing
