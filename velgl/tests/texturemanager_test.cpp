#include <velgl/texturemanager.h>

#include <gmock/gmock.h>

#include <velgl/texture.h>

#include "support/messagelog.h"

namespace Atelier::Vel::Testing {

namespace {

class TextureManagerTest : public ::testing::Test {
protected:
    void TearDown() override { _manager.setLoader({}); }

    TextureManager& _manager = TextureManager::Instance();
    const std::unique_ptr<Texture> _texture = Texture::ofColor(Qt::red);
    const std::unique_ptr<Texture> _fallback = Texture::ofColor(Qt::white);
};

} // namespace

TEST_F(TextureManagerTest, OneTexturePerColour) {
    Texture* white = _manager.colorTexture(Qt::white);
    ASSERT_NE(white, nullptr);
    EXPECT_EQ(_manager.colorTexture(QColor(255, 255, 255)), white);
    EXPECT_EQ(_manager.colorTexture(QColor::fromHsv(0, 0, 255)), white);
    EXPECT_NE(_manager.colorTexture(QColor(255, 255, 255, 254)), white);
    EXPECT_EQ(white->width(), 1);
    EXPECT_EQ(white->height(), 1);
    EXPECT_TRUE(white->isReadOnly());
}

TEST_F(TextureManagerTest, PathsGoThroughTheLoader) {
    QString asked;
    _manager.setLoader([&](const QString& path) {
        asked = path;
        return _texture.get();
    });
    EXPECT_EQ(_manager.texture(QStringLiteral("/a.png"), _fallback.get()), _texture.get());
    EXPECT_EQ(asked, QStringLiteral("/a.png"));
}

TEST_F(TextureManagerTest, PathThatDoesNotLoadIsReportedOnceAndNotTriedAgain) {
    int calls = 0;
    _manager.setLoader([&](const QString&) -> Texture* {
        ++calls;
        return nullptr;
    });
    const MessageLog log;
    for (int round = 0; round < 3; ++round)
        EXPECT_EQ(_manager.texture(QStringLiteral("/no.png"), _fallback.get()), _fallback.get());
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::ElementsAre(QStringLiteral("Texture '/no.png' cannot be loaded")));
    EXPECT_EQ(log.messages().front().category, QStringLiteral("velgl"));
}

TEST_F(TextureManagerTest, NewLoaderIsTriedOnPathsThatFailed) {
    const MessageLog log;
    EXPECT_EQ(_manager.texture(QStringLiteral("/later.png"), _fallback.get()), _fallback.get())
        << "no loader";
    _manager.setLoader([&](const QString&) { return _texture.get(); });
    EXPECT_EQ(_manager.texture(QStringLiteral("/later.png"), _fallback.get()), _texture.get());
}

TEST_F(TextureManagerTest, LoadedTextureGetsItsPathAsLabelUnlessItHasOne) {
    Texture unlabelled(0x0DE1, 0x1908, 1, 1, 0, nullptr);
    Texture labelled(0x0DE1, 0x1908, 1, 1, 0, nullptr);
    labelled.setLabel(QStringLiteral("mine"));
    _manager.setLoader(
        [&](const QString& path) { return path == QLatin1String("/a.png") ? &unlabelled : &labelled; });
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(_manager.texture(QStringLiteral("/a.png"), _fallback.get()), &unlabelled);
        EXPECT_EQ(_manager.texture(QStringLiteral("/b.png"), _fallback.get()), &labelled);
    }
    EXPECT_EQ(unlabelled.label(), QStringLiteral("/a.png"));
    EXPECT_EQ(labelled.label(), QStringLiteral("mine"));
}

TEST_F(TextureManagerTest, ColoursAreNamedByTheirChannels) {
    EXPECT_EQ(_manager.colorTexture(QColor(1, 2, 3, 4))->label(), QStringLiteral("#04010203"));
    EXPECT_EQ(_manager.colorTexture(QColor::fromCmyk(255, 0, 255, 0))->label(), QStringLiteral("#ff00ff00"));
}

TEST_F(TextureManagerTest, TokensFileTextures) {
    const TextureToken token;
    EXPECT_EQ(_manager.texture(token), nullptr);
    _manager.setTexture(token, _texture.get());
    EXPECT_EQ(_manager.texture(token), _texture.get());
    EXPECT_EQ(_manager.texture(TextureToken()), nullptr);
    _manager.setTexture(token, nullptr);
    EXPECT_EQ(_manager.texture(token), nullptr);
}

} // namespace Atelier::Vel::Testing
