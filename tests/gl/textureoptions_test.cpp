// The colour space and the anisotropic filter of textures.
#include <epoxy/gl.h>

#include <velmodel/textureloader.h>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/texture.h>
#include <velmodel/modelfiles.h>

#include "entrypointlog.h"
#include "support/messagelog.h"
#include "texturefixture.h"

namespace Atelier::Vel {

namespace {

using ColorSpace = TextureOptions::ColorSpace;

class TextureOptionsTest : public TextureFixture {
protected:
    std::shared_ptr<Texture> load(const TextureOptions& options) const {
        return makeTextureLoader(ModelFiles(), options)(save(numbered(4, 2), "a.png"));
    }
    static GLint formatOf(Texture& texture) {
        const AutoBinder binder(&texture);
        GLint format = 0;
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
        return format;
    }
    static float anisotropyOf(Texture& texture) {
        const AutoBinder binder(&texture);
        float samples = 0;
        glGetTexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY, &samples);
        return samples;
    }
    static bool hasExtension() {
        return epoxy_has_gl_extension("GL_ARB_texture_filter_anisotropic") ||
               epoxy_has_gl_extension("GL_EXT_texture_filter_anisotropic");
    }
};

} // namespace

TEST_F(TextureOptionsTest, SRgbIsTheInternalFormatInEachContext) {
    const std::shared_ptr<Texture> texture = load({ColorSpace::SRgb});
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(texture->internalFormat(), GL_SRGB8_ALPHA8);
    EXPECT_EQ(formatOf(*texture), GL_SRGB8_ALPHA8);
    EXPECT_EQ(texture->readBack().convertToFormat(QImage::Format_ARGB32),
              numbered(4, 2).mirrored(false, true));
    const auto other = makeContext(options());
    other->makeCurrent();
    watchMessages();
    EXPECT_EQ(formatOf(*texture), GL_SRGB8_ALPHA8);
    _context->makeCurrent();
}

TEST_F(TextureOptionsTest, DefaultsAreThoseOfLoadTexture) {
    const std::shared_ptr<Texture> texture = load({});
    ASSERT_NE(texture, nullptr);
    Texture* const other = LoadTexture(path("a.png"));
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(texture->internalFormat(), GL_RGBA);
    EXPECT_EQ(formatOf(*texture), formatOf(*other));
    EXPECT_EQ(anisotropyOf(*texture), 1.0F);
    EXPECT_EQ(anisotropyOf(*other), 1.0F);
}

TEST_F(TextureOptionsTest, ShaderReadsLinearValuesOfAnSRgbTexture) {
    constexpr int kHalfInSRgb = 188; // is 0.50 of the light of 255
    saveColor(QColor(kHalfInSRgb, 0, 255, 255), "a.png");
    const std::unique_ptr<GPUModel> model = loadTriangle("a.png");
    model->setTextureLoader(makeTextureLoader(ModelFiles(), {ColorSpace::SRgb}));
    const QColor linear = drawn(*model);
    EXPECT_NEAR(linear.red(), 128, 2);
    EXPECT_EQ(linear.green(), 0);
    EXPECT_EQ(linear.blue(), 255);
    model->setTextureLoader(makeTextureLoader(ModelFiles(), {ColorSpace::Linear}));
    EXPECT_EQ(drawn(*model).red(), kHalfInSRgb);
}

TEST_F(TextureOptionsTest, AnisotropyIsSetInEachContextUpToTheMaximum) {
    if (!hasExtension())
        GTEST_SKIP() << "this driver has no anisotropic filter";
    GLint maximum = 0;
    glGetIntegerv(GL_MAX_TEXTURE_MAX_ANISOTROPY, &maximum);
    ASSERT_GE(maximum, 2);
    const struct {
        int wanted;
        int given;
    } cases[] = {{-3, 1}, {0, 1}, {1, 1}, {2, 2}, {maximum, maximum}, {maximum + 1, maximum}};
    for (const auto& [wanted, given] : cases) {
        const std::shared_ptr<Texture> texture = load({ColorSpace::Linear, wanted});
        ASSERT_NE(texture, nullptr);
        EXPECT_EQ(anisotropyOf(*texture), float(given)) << wanted;
        const auto other = makeContext(options());
        other->makeCurrent();
        watchMessages();
        EXPECT_EQ(anisotropyOf(*texture), float(given)) << wanted;
        _context->makeCurrent();
    }
}

// Drivers also limit it themselves.
TEST_F(TextureOptionsTest, AnisotropyIsLimitedToWhatTheDriverReports) {
    if (!hasExtension())
        GTEST_SKIP() << "this driver has no anisotropic filter";
    EntryPointLog log;
    log.integers[GL_MAX_TEXTURE_MAX_ANISOTROPY] = 2;
    ASSERT_NE(load({ColorSpace::Linear, 4}), nullptr);
    EXPECT_TRUE(log.calls.contains(QStringLiteral("texParameteri de1 84fe 2")));
}

TEST_F(TextureOptionsTest, AnisotropyIsNotSetWithoutTheExtension) {
    EntryPointLog log;
    log.integers = {{GL_MAJOR_VERSION, 4}, {GL_MINOR_VERSION, 5}};
    log.hidesExtensions = true;
    ASSERT_NE(load({ColorSpace::Linear, 4}), nullptr);
    const QStringList calls = log.calls;
    log.calls.clear();
    ASSERT_NE(load({}), nullptr);
    EXPECT_EQ(calls, log.calls);
}

TEST_F(TextureOptionsTest, AnisotropyIsPartOfTheLaterVersions) {
    if (!hasExtension())
        GTEST_SKIP() << "this driver has no anisotropic filter";
    const QString call = QStringLiteral("texParameteri de1 84fe 4");
    for (const auto& [major, minor, isPart] : {std::tuple(4, 5, false), {4, 6, true}, {5, 0, true}}) {
        EntryPointLog log;
        log.integers = {{GL_MAJOR_VERSION, major}, {GL_MINOR_VERSION, minor}};
        log.hidesExtensions = true;
        ASSERT_NE(load({ColorSpace::Linear, 4}), nullptr);
        EXPECT_EQ(log.calls.contains(call), isPart) << major << '.' << minor;
    }
}

} // namespace Atelier::Vel
