// Dark models: what is measured in a picture, and the advice that `velmodel render` gives.

#include "brightness.h"

#include <QtGui/QImage>

#include <gmock/gmock.h>

#include "program.h"
#include "support/messagelog.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Testing {

namespace {

using Tool::Brightness;

QImage pixels(const std::vector<QColor>& colours) {
    QImage picture(int(colours.size()), 1, QImage::Format_RGBA8888);
    for (int x = 0; x < picture.width(); ++x)
        picture.setPixelColor(x, 0, colours[static_cast<std::size_t>(x)]);
    return picture;
}

TEST(BrightnessTest, DarkestTwentiethOfEveryChannelIsDark) {
    const QImage picture = pixels({QColor(12, 12, 12), QColor(13, 0, 0), QColor(0, 13, 0), QColor(0, 0, 13),
                                   QColor(255, 255, 255), QColor(0, 0, 0)});
    const Brightness brightness = Tool::brightnessOf(picture, picture.rect());
    EXPECT_EQ(brightness.shown, 6);
    EXPECT_EQ(brightness.dark, 2);
}

TEST(BrightnessTest, OnlyCoveredPixelsCount) {
    const QImage picture = pixels({QColor(0, 0, 0, 127), QColor(0, 0, 0, 128), QColor(255, 0, 0, 0)});
    const Brightness brightness = Tool::brightnessOf(picture, picture.rect());
    EXPECT_EQ(brightness.shown, 1);
    EXPECT_EQ(brightness.dark, 1);
}

TEST(BrightnessTest, PixelsOutsideOfTheAreaDoNotCountAndStay) {
    QImage picture(5, 4, QImage::Format_RGBA8888);
    picture.fill(QColor(0, 0, 0, 200));
    const QRect area(1, 2, 3, 1);
    EXPECT_EQ(Tool::brightnessOf(picture, area).shown, 3);
    Tool::makeOpaque(picture, area);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 5; ++x)
            EXPECT_EQ(qAlpha(picture.pixel(x, y)), area.contains(x, y) ? 255 : 200);
}

TEST(BrightnessTest, MostIsMoreThanHalf) {
    EXPECT_FALSE(Brightness().isDark());
    EXPECT_FALSE((Brightness{2, 1}.isDark()));
    EXPECT_TRUE((Brightness{3, 2}.isDark()));
    Brightness sum{2, 1};
    sum += {1, 1};
    EXPECT_TRUE(sum.isDark());
}

class DarkPicturesTest : public testing::Test {
protected:
    /// A square of that material in front of the camera.
    QString square(const QByteArray& material, const QByteArray& more = {}) const {
        _folder.write("m.mtl", "newmtl m\n" + material);
        return _folder.write("m.obj", "mtllib m.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\n"
                                      "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nusemtl m\n"
                                      "f 1/1 2/2 3/3 4/4\n" +
                                          more);
    }
    QString messages(const QString& model, const QStringList& options = {}) const {
        const ProgramResult result = runProgram(
            QStringList{"render", model, "-o", _folder.path("m.png"), "--resolution", "40x30"} + options);
        EXPECT_EQ(result.exitCode, 0);
        return result.errors;
    }
    static QString advice(const QString& model, const char* text) {
        return QStringLiteral("velmodel: warning: %1: %2\n").arg(model, QLatin1String(text));
    }

    TemporaryFolder _folder;
};

TEST_F(DarkPicturesTest, ColoursThatMayBeLinearAreNamed) {
    const QString model = square("Kd 0.03 0.03 0.03\n");
    EXPECT_EQ(messages(model),
              advice(model, "Most of the picture is nearly black; --mtl-colours linear shows more"));
    EXPECT_EQ(messages(model, {"--mtl-colours", "linear"}), QString());
}

TEST_F(DarkPicturesTest, DarkTexturesNeedExposure) {
    QImage texture(2, 2, QImage::Format_RGB32);
    texture.fill(QColor(9, 9, 9));
    ASSERT_TRUE(texture.save(_folder.path("dark.png")));
    const QString model = square("Kd 1 1 1\nmap_Kd dark.png\n");
    EXPECT_EQ(messages(model), advice(model, "Most of the picture is nearly black; --exposure 2 shows more"));
    EXPECT_EQ(messages(model, {"--exposure", "2"}), QString());
    EXPECT_EQ(messages(model, {"--exposure", "-1"}),
              advice(model, "Most of the picture is nearly black; --exposure 3 shows more"));
}

TEST_F(DarkPicturesTest, BlackMaterialsNeedOtherColours) {
    const QString model = square("Kd 0 0 0\n");
    EXPECT_EQ(messages(model), advice(model, "All materials are black; --mtl-colours none shows the shape"));
    EXPECT_EQ(messages(model, {"--mtl-colours", "none"}), QString());
    const QString shiny = square("Kd 0 0 0\nKs 1 1 1\nNs 1\n");
    EXPECT_EQ(messages(shiny), advice(shiny, "All materials are black; --mtl-colours none shows the shape"));
    EXPECT_EQ(messages(square("Kd 0 0 0\nKe 1 1 1\n")), QString()) << "it shines";
}

TEST_F(DarkPicturesTest, BlackTextureNeedsOtherColours) {
    QImage texture(2, 2, QImage::Format_RGB32);
    texture.fill(Qt::black);
    ASSERT_TRUE(texture.save(_folder.path("black.png")));
    const QString model = square("Kd 1 1 1\nmap_Kd black.png\n");
    EXPECT_EQ(messages(model),
              advice(model, "Most of the picture is nearly black; --mtl-colours none shows more"));
}

TEST_F(DarkPicturesTest, SmallDarkPartsAndDarkBackgroundsGiveNoAdvice) {
    const QString bright = square("Kd 0.5 0.5 0.5\n");
    EXPECT_EQ(messages(bright, {"--background", "black", "--camera-zoom", "0.3"}), QString());
    const QByteArray smallBlackPart = "newmtl black\nKd 0 0 0\n";
    const QString mixed = square("Kd 0.5 0.5 0.5\n" + smallBlackPart,
                                 "v 0 0 0.1\nv 0.5 0 0.1\nv 0.5 0.5 0.1\nusemtl black\nf 5/1 6/1 7/1\n");
    EXPECT_EQ(messages(mixed), QString());
}

TEST_F(DarkPicturesTest, TurntableGivesAdviceOnce) {
    const QString model = square("Kd 0.03 0.03 0.03\n");
    EXPECT_EQ(messages(model, {"--turntable", "3"}),
              advice(model, "Most of the picture is nearly black; --mtl-colours linear shows more"));
}

} // namespace

} // namespace Atelier::Vel::Testing
