#include <velgl/instancedata.h>

#include <limits>
#include <memory>
#include <type_traits>

#include <gmock/gmock.h>

#include <velgl/texture.h>

#include "support/messagelog.h"

namespace Atelier::Vel::Testing {

namespace {

const QString kName = QStringLiteral("Material");
const QString kMember = QStringLiteral("Kd");

} // namespace

static_assert(std::is_convertible_v<QString, InstanceData>);

TEST(InstanceDataTest, StartsEmptyWithItsName) {
    const InstanceData data(kName);
    EXPECT_EQ(data.name(), kName);
    EXPECT_TRUE(data.valueNames().isEmpty());
    EXPECT_TRUE(data.textureNames().isEmpty());
    EXPECT_TRUE(InstanceData().name().isNull());
}

TEST(InstanceDataTest, KeepsACopyOfTheBytes) {
    InstanceData data(kName);
    char bytes[] = {1, 0, 3};
    data.set(kMember, bytes, 3);
    bytes[0] = 9;
    EXPECT_TRUE(data.hasValue(kMember));
    EXPECT_EQ(data.value(kMember), QByteArray("\1\0\3", 3));
    EXPECT_TRUE(data.value(QStringLiteral("other")).isNull());
}

TEST(InstanceDataTest, LaterValueReplacesTheEarlierOne) {
    InstanceData data(kName);
    data.set(kMember, "abcd", 4);
    data.set(kMember, "x", 1);
    EXPECT_EQ(data.value(kMember), QByteArray("x"));
    data.set(kMember, nullptr, 0);
    EXPECT_TRUE(data.hasValue(kMember));
    EXPECT_TRUE(data.value(kMember).isEmpty());
}

TEST(InstanceDataTest, InvalidValuesAreRefused) {
    InstanceData data(kName);
    const MessageLog log;
    const char byte = 'x';
    const quint64 tooLarge = std::numeric_limits<int>::max() / 2 + 1;
    data.set(kMember, nullptr, 4);
    data.set(kMember, &byte, tooLarge);
    data.set(kMember, &byte, std::numeric_limits<quint64>::max());
    EXPECT_FALSE(data.hasValue(kMember));
    const QString refused = QStringLiteral("Value 'Kd' of 'Material' is refused: ");
    const QString address = QString::asprintf("%p", static_cast<const void*>(&byte));
    EXPECT_THAT(
        log.texts(QtWarningMsg),
        testing::ElementsAre(refused + QString::asprintf("4 bytes at %p", static_cast<void*>(nullptr)),
                             refused + "1073741824 bytes at " + address,
                             refused + "18446744073709551615 bytes at " + address));
}

TEST(InstanceDataTest, EmptyNameIsNotNull) {
    EXPECT_FALSE(InstanceData(QStringLiteral("")).name().isNull());
    EXPECT_TRUE(InstanceData(QStringLiteral("")).name().isEmpty());
}

TEST(InstanceDataTest, UnnamedDataHoldsValuesAsWell) {
    InstanceData data;
    data.set(kMember, "x", 1);
    EXPECT_EQ(data.value(kMember), QByteArray("x"));
    EXPECT_TRUE(data.name().isNull());
    InstanceData cleared;
    cleared.clear();
    EXPECT_TRUE(cleared.valueNames().isEmpty());
}

TEST(InstanceDataTest, TextureIsAPathOrAnObject) {
    InstanceData data(kName);
    data.setTexture(kMember, QStringLiteral("/a.png"));
    EXPECT_TRUE(data.hasTexture(kMember));
    EXPECT_EQ(data.texturePath(kMember), QStringLiteral("/a.png"));
    EXPECT_EQ(data.texture(kMember), nullptr);
    const std::unique_ptr<Texture> texture = Texture::ofColor(Qt::red);
    data.setTexture(kMember, texture.get());
    EXPECT_TRUE(data.texturePath(kMember).isNull());
    EXPECT_EQ(data.texture(kMember), texture.get());
    EXPECT_FALSE(data.hasValue(kMember));
}

TEST(InstanceDataTest, DeletedTextureIsNullButStillAMember) {
    InstanceData data(kName);
    std::unique_ptr<Texture> texture = Texture::ofColor(Qt::red);
    data.setTexture(kMember, texture.get());
    const InstanceData copy = data;
    texture.reset();
    for (const InstanceData& item : {data, copy}) {
        EXPECT_TRUE(item.hasTexture(kMember));
        EXPECT_EQ(item.texture(kMember), nullptr);
    }
}

TEST(InstanceDataTest, ClearKeepsTheName) {
    InstanceData data(kName);
    data.set(kMember, "x", 1);
    data.setTexture(kMember, QStringLiteral("/a.png"));
    data.clear();
    EXPECT_EQ(data.name(), kName);
    EXPECT_FALSE(data.hasValue(kMember));
    EXPECT_FALSE(data.hasTexture(kMember));
}

TEST(InstanceDataTest, CopiesAreIndependent) {
    InstanceData data(kName);
    data.set(kMember, "x", 1);
    InstanceData copy = data;
    copy.set(kMember, "y", 1);
    copy.setTexture(QStringLiteral("map"), Texture::ofColor(Qt::red).get());
    EXPECT_EQ(data.value(kMember), QByteArray("x"));
    EXPECT_FALSE(data.hasTexture(QStringLiteral("map")));
}

TEST(InstanceDataTest, NamesAreSorted) {
    InstanceData data(kName);
    for (const char* member : {"b", "a", "c"}) {
        data.set(QLatin1String(member), "x", 1);
        data.setTexture(QLatin1String(member), Texture::ofColor(Qt::red).get());
    }
    const QStringList sorted = {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")};
    EXPECT_EQ(data.valueNames(), sorted);
    EXPECT_EQ(data.textureNames(), sorted);
}

} // namespace Atelier::Vel::Testing
