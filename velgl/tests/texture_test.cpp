#include "glhooks.h"

#include <velgl/texture.h>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/glentrypoints.h>

#include "clientstate.h"
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

TEST_P(TextureTest, UnbindRestoresTheTextureOfItsUnit) {
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

TEST_P(TextureTest, BindsOnSeveralUnitsAreRevertedOnEach) {
    Texture texture(GL_TEXTURE_2D, GL_RGBA, 1, 1, 0, nullptr);
    for (const GLenum unit : {GL_TEXTURE1, GL_TEXTURE3}) {
        glActiveTexture(unit);
        ASSERT_TRUE(texture.bind());
    }
    texture.unbind();
    EXPECT_EQ(boundTexture(), 0U);
    glActiveTexture(GL_TEXTURE1);
    EXPECT_EQ(boundTexture(), texture.name());
    texture.unbind();
    EXPECT_EQ(boundTexture(), 0U);
}

TEST_P(TextureTest, UnbindInAnotherContextChangesNothing) {
    OpenGLDeviceContext::HeadlessOptions shared = options();
    shared.shareWith = _context;
    const auto sharing = makeContext(shared);
    Texture texture(GL_TEXTURE_2D, GL_RGBA, 1, 1, 0, nullptr);
    Texture other(GL_TEXTURE_2D, GL_RGBA, 1, 1, 0, nullptr);
    ASSERT_TRUE(texture.bind());
    sharing->makeCurrent();
    watchMessages();
    ASSERT_TRUE(other.bind());
    texture.unbind();
    EXPECT_EQ(boundTexture(), other.name());
    other.unbind();
    _context->makeCurrent();
}

TEST_P(TextureTest, SolidColourIsSampledUnchanged) {
    const std::unique_ptr<Texture> texture = Texture::ofColor(Qt::red);
    const AutoBinder binder(texture.get());
    const auto parameter = [](GLenum name) {
        GLint value = -1;
        glGetTexParameteriv(GL_TEXTURE_2D, name, &value);
        return value;
    };
    EXPECT_EQ(parameter(GL_TEXTURE_MIN_FILTER), GL_NEAREST);
    EXPECT_EQ(parameter(GL_TEXTURE_MAG_FILTER), GL_NEAREST);
    EXPECT_EQ(parameter(GL_TEXTURE_MAX_LEVEL), 0) << "the texture is complete with one level";
    GLint format = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
    EXPECT_EQ(format, GL_RGBA8);
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
    for (const int level : {-1, 1, 3, 30, 31, 1000})
        EXPECT_TRUE(texture->readBack(level).isNull()) << level;
    for (int level = 1; level <= 20; ++level)
        EXPECT_TRUE(texture->readBack(level).isNull()) << "the largest texture has no such level";
    EXPECT_FALSE(texture->readBack(0).isNull());
}

TEST_P(TextureTest, SmallestLevelOfTheLargestTextureCanBeRead) {
    GLint largestSide = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largestSide);
    int lastLevel = 0;
    while (largestSide >> (lastLevel + 1))
        ++lastLevel;
    const unsigned char texel[] = {10, 20, 30, 40};
    Texture texture(GL_TEXTURE_2D, GL_RGBA, 1, 1, 0, nullptr);
    {
        const AutoBinder binder(&texture);
        glEntryPoints().texImage2D(GL_TEXTURE_2D, lastLevel, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                                   texel);
    }
    EXPECT_EQ(texture.readBack(lastLevel).pixelColor(0, 0), QColor(10, 20, 30, 40));
    EXPECT_TRUE(texture.readBack(lastLevel + 1).isNull());
}

TEST_P(TextureTest, ContentIsThatOfTheFirstLevel) {
    const unsigned char texels[3 * 4] = {};
    Texture texture(GL_TEXTURE_2D, GL_RGBA, 3, 1, 0, nullptr);
    EXPECT_FALSE(texture.hasContent()) << "the texture has no name yet";
    {
        const AutoBinder binder(&texture);
        EXPECT_FALSE(texture.hasContent());
        EXPECT_TRUE(texture.readBack().isNull());
        glEntryPoints().texImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 3, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
    }
    EXPECT_TRUE(texture.hasContent());
    Texture cube(GL_TEXTURE_CUBE_MAP, GL_RGBA, 1, 1, 0, nullptr);
    const AutoBinder binder(&cube);
    EXPECT_FALSE(cube.hasContent()) << "only two-dimensional textures are queried";
    EXPECT_TRUE(cube.readBack().isNull());
}

TEST_P(TextureTest, MipmapsAreMadeWhereThereIsAnImage) {
    const unsigned char texels[4 * 4 * 4] = {};
    Texture texture(GL_TEXTURE_2D, GL_RGBA, 4, 4, 0, nullptr);
    {
        const AutoBinder binder(&texture);
        glEntryPoints().generateMipmap(GL_TEXTURE_2D);
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << "there is no image yet";
        glEntryPoints().texImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 4, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
        EXPECT_TRUE(texture.readBack(2).isNull());
        glEntryPoints().generateMipmap(GL_TEXTURE_2D);
    }
    EXPECT_EQ(texture.readBack(2).size(), QSize(1, 1));
    Texture array(GL_TEXTURE_1D_ARRAY, GL_RGBA, 2, 1, 0, nullptr);
    const AutoBinder binder(&array);
    glEntryPoints().texImage2D(GL_TEXTURE_1D_ARRAY, 0, GL_RGBA, 2, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
    glEntryPoints().generateMipmap(GL_TEXTURE_1D_ARRAY);
    GLint width = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_1D_ARRAY, 1, GL_TEXTURE_WIDTH, &width);
    EXPECT_EQ(width, 1);
}

TEST_P(TextureTest, EntryPointsPassTheirArgumentsInOrder) {
    const QImage image = checkered();
    Texture texture(GL_TEXTURE_2D, GL_RGBA, 3, 5, 0, nullptr);
    const AutoBinder binder(&texture);
    glEntryPoints().texImage2D(GL_TEXTURE_2D, 2, GL_RGB8, 3, 5, 0, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV,
                               image.constBits());
    GLint format = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 2, GL_TEXTURE_INTERNAL_FORMAT, &format);
    EXPECT_EQ(format, GL_RGB8);
    EXPECT_EQ(texture.readBack(2).convertToFormat(QImage::Format_RGB32),
              image.convertToFormat(QImage::Format_RGB32));
    glEntryPoints().pixelStorei(GL_PACK_ALIGNMENT, 2);
    int alignment = 0;
    glEntryPoints().getIntegerv(GL_PACK_ALIGNMENT, &alignment);
    EXPECT_EQ(alignment, 2);
    glEntryPoints().texParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_MIRRORED_REPEAT);
    GLint wrap = 0;
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &wrap);
    EXPECT_EQ(wrap, GL_MIRRORED_REPEAT);
    EXPECT_EQ(glEntryPoints().getStringi(GL_EXTENSIONS, 1), glGetStringi(GL_EXTENSIONS, 1));
}

// Transfers use plain rows, whatever the client has set. Only the alignment of the pixels of a client is the
// one that the client has set.
TEST_P(TextureTest, PixelsAreTransferredAsPlainRows) {
    const BusyClient client;
    const auto value = [](GLenum name) {
        GLint found = -1;
        glGetIntegerv(name, &found);
        return found;
    };
    std::vector<GLint> unpack;
    std::vector<GLint> pack;
    const PixelHook hook([&] {
        unpack = {
            value(GL_UNPACK_ALIGNMENT),  value(GL_UNPACK_ROW_LENGTH),  value(GL_UNPACK_IMAGE_HEIGHT),
            value(GL_UNPACK_SKIP_ROWS),  value(GL_UNPACK_SKIP_PIXELS), value(GL_UNPACK_SKIP_IMAGES),
            value(GL_UNPACK_SWAP_BYTES), value(GL_UNPACK_LSB_FIRST),   value(GL_PIXEL_UNPACK_BUFFER_BINDING)};
        pack = {value(GL_PACK_ALIGNMENT),  value(GL_PACK_ROW_LENGTH),  value(GL_PACK_IMAGE_HEIGHT),
                value(GL_PACK_SKIP_ROWS),  value(GL_PACK_SKIP_PIXELS), value(GL_PACK_SKIP_IMAGES),
                value(GL_PACK_SWAP_BYTES), value(GL_PACK_LSB_FIRST),   value(GL_PIXEL_PACK_BUFFER_BINDING)};
    });
    const std::unique_ptr<Texture> texture = Texture::ofColor(Qt::red);
    const AutoBinder binder(texture.get());
    EXPECT_THAT(unpack, testing::ElementsAre(4, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(texture->readBack().pixelColor(0, 0), QColor(Qt::red));
    EXPECT_THAT(pack, testing::ElementsAre(4, 0, 0, 0, 0, 0, 0, 0, 0));
    const unsigned char texel[] = {1, 2, 3, 4};
    glEntryPoints().texImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texel);
    EXPECT_THAT(unpack, testing::ElementsAre(2, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_NE(pack.front(), 4) << "the parameters of the other direction are unchanged";
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
    texture.setLabel(QStringLiteral("stone"));
    glGetObjectLabel(GL_TEXTURE, texture.name(), sizeof text, nullptr, text);
    EXPECT_STREQ(text, "stone");
    EXPECT_EQ(texture.label(), QStringLiteral("stone"));
}

} // namespace Atelier::Vel::Testing
