#include "jsonoutput.h"

#include <charconv>
#include <cstring>
#include <limits>
#include <random>

#include <QtCore/QJsonObject>

#include <gmock/gmock.h>

#include "support/messagelog.h"
#include "support/scale.h"

namespace Atelier::Vel::Tool {

namespace {

QByteArray printed(float value) {
    const QByteArray text = jsonText(QJsonDocument(QJsonArray{jsonFloat(value)}));
    return text.mid(1).chopped(2).trimmed();
}

quint32 bits(float value) {
    quint32 result = 0;
    std::memcpy(&result, &value, sizeof(result));
    return result;
}

float fromBits(quint32 value) {
    float result = 0;
    std::memcpy(&result, &value, sizeof(result));
    return result;
}

TEST(JsonOutputTest, FloatsHaveTheirShortestSpelling) {
    EXPECT_EQ(printed(0.7F), "0.7");
    EXPECT_EQ(printed(0.1F), "0.1");
    EXPECT_EQ(printed(1.0F / 3), "0.33333334");
    EXPECT_EQ(printed(-103.217316F), "-103.217316") << "at most nine digits";
    EXPECT_EQ(printed(10), "10");
    EXPECT_EQ(printed(16777216), "16777216");
    EXPECT_EQ(printed(std::numeric_limits<float>::max()), "3.4028235e+38");
    EXPECT_EQ(printed(std::numeric_limits<float>::denorm_min()), "1e-45");
}

TEST(JsonOutputTest, SpellingGivesTheSameFloatDirectlyAndThroughADouble) {
    // "7.038531e-26" gives this float if it is read directly, and the next one if it is rounded twice.
    EXPECT_EQ(printed(fromBits(0x15AE43FD)), "7.0385307e-26");
    EXPECT_EQ(printed(fromBits(0x15AE43FE)), "7.0385313e-26");
}

TEST(JsonOutputTest, ZeroKeepsItsSign) {
    EXPECT_EQ(printed(0.0F), "0");
    EXPECT_EQ(printed(-0.0F), "-0.0");
}

TEST(JsonOutputTest, NotANumberAndInfinityAreStrings) {
    EXPECT_EQ(printed(std::numeric_limits<float>::quiet_NaN()), "\"nan\"");
    EXPECT_EQ(printed(std::numeric_limits<float>::infinity()), "\"inf\"");
    EXPECT_EQ(printed(-std::numeric_limits<float>::infinity()), "\"-inf\"");
}

TEST(JsonOutputTest, TextLikeThePlaceholderForMinusZeroIsUnchanged) {
    const QJsonObject object{{"5e-324", "5e-324"},
                             {"values", QJsonArray{jsonFloat(-0.0F), "5e-324", "\n5e-324"}}};
    const QByteArray text = jsonText(QJsonDocument(object));
    EXPECT_EQ(QJsonDocument::fromJson(text).object().value("5e-324"), "5e-324");
    EXPECT_EQ(text.count("-0.0"), 1);
    EXPECT_EQ(text.count("5e-324"), 4);
}

TEST(JsonOutputTest, RandomBitsReadBackUnchanged) {
    std::mt19937 random(20240611);
    const int count = Testing::scaled(20000);
    for (int n = 0; n < count; ++n) {
        const float value = fromBits(static_cast<quint32>(random()));
        if (!qIsFinite(value))
            continue;
        const QByteArray text = printed(value);
        EXPECT_EQ(bits(static_cast<float>(text.toDouble())), bits(value)) << text.toStdString();
        float read = 0.0F;
        std::from_chars(text.constData(), text.constData() + text.size(), read);
        EXPECT_EQ(bits(read), bits(value)) << text.toStdString();
    }
}

TEST(JsonOutputTest, BytesAreReadAsFloatsWithoutTheRemainder) {
    const float values[] = {1.5F, -2};
    QByteArray bytes(reinterpret_cast<const char*>(values), sizeof(values));
    EXPECT_EQ(jsonFloats(bytes), (QJsonArray{1.5, -2}));
    EXPECT_EQ(jsonFloats(bytes + "abc"), (QJsonArray{1.5, -2}));
    EXPECT_EQ(jsonFloats({}), QJsonArray());
}

} // namespace

} // namespace Atelier::Vel::Tool
