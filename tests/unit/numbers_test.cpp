#include "import/text/numbers.h"

#include <cstring>
#include <limits>
#include <random>
#include <string>

#include <QtCore/QLocale>
#include <QtCore/QString>

#include <gmock/gmock.h>

#include "support/scale.h"

namespace Atelier::Vel {

namespace {

using Testing::scaled;

std::uint32_t bitsOf(float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

float parsedFloat(const std::string& token) {
    float value = 0.0F;
    if (parseFloat(token.data(), token.data() + token.size(), value))
        return value;
    return QString::fromLatin1(token.data(), static_cast<int>(token.size())).toFloat();
}

// An ObjReader gives QString's number for every token, including spellings that parseFloat does not accept.
void expectSameFloat(const std::string& token) {
    const float expected = QString::fromLatin1(token.data(), static_cast<int>(token.size())).toFloat();
    ASSERT_EQ(bitsOf(parsedFloat(token)), bitsOf(expected)) << '"' << token << '"';
}

void expectSameInt(const std::string& token) {
    bool expectedOk = false;
    const int expected = QString::fromLatin1(token.data(), static_cast<int>(token.size())).toInt(&expectedOk);
    int value = 0;
    if (parseInt(token.data(), token.data() + token.size(), value)) {
        ASSERT_TRUE(expectedOk) << '"' << token << '"';
        ASSERT_EQ(value, expected) << '"' << token << '"';
    }
}

class Spellings {
public:
    explicit Spellings(unsigned int seed) : _random(seed) {}

    unsigned int below(unsigned int bound) {
        return std::uniform_int_distribution<unsigned int>(0, bound - 1)(_random);
    }
    std::string digits(unsigned int most) {
        std::string text;
        for (unsigned int count = below(most + 1); count > 0; --count)
            text += static_cast<char>('0' + below(10));
        return text;
    }
    std::string sign() { return std::string(1, "-+"[below(2)]).substr(below(2)); }
    std::string exponent() { return std::string(1, "eE"[below(2)]) + sign() + digits(3); }
    /// A decimal as programs write them.
    std::string decimal() {
        std::string text = sign() + digits(below(8) == 0 ? 25 : 9);
        if (below(8) != 0)
            text += '.' + digits(below(8) == 0 ? 40 : 9);
        if (below(4) == 0)
            text += exponent();
        return text;
    }
    /// Characters that numbers are made of, in any order.
    std::string scramble() {
        static const std::string kCharacters = "0123456789012345678900..--++eEinfaNx,# \0\x01"; // NOLINT
        std::string text;
        for (unsigned int count = below(12); count > 0; --count)
            text += kCharacters[below(static_cast<unsigned int>(kCharacters.size()))];
        return text;
    }
    /// A float's or a double's own value, printed with up to 20 digits.
    std::string printed() {
        const std::uint64_t bits = (std::uint64_t(_random()) << 32) | _random();
        double value = 0.0;
        if (below(2) == 0) {
            std::memcpy(&value, &bits, sizeof value);
        } else {
            float single = 0.0F;
            std::memcpy(&single, &bits, sizeof single);
            value = static_cast<double>(single);
        }
        char text[64];
        std::snprintf(text, sizeof text, below(2) == 0 ? "%.*g" : "%.*e", static_cast<int>(below(21)), value);
        return text;
    }

private:
    std::mt19937 _random;
};

} // namespace

TEST(NumbersTest, OddSpellingsReadAsQStringReadsThem) {
    for (const char* token : {"",
                              "0",
                              "-0",
                              "+0",
                              "-0.0",
                              "0e0",
                              "-0e5",
                              "00000000000000000000",
                              "-00000000000000000000.0",
                              "0.00000000000000000000000000000000000001",
                              "1",
                              "-1",
                              "+1",
                              "1.",
                              ".5",
                              "-.5",
                              ".",
                              "-",
                              "+",
                              "--1",
                              "1.0abc",
                              "1,5",
                              "1e",
                              "1e+",
                              "1e-",
                              "e5",
                              "0x10",
                              "infinity",
                              "inf",
                              "-inf",
                              "+inf",
                              "INF",
                              "Inf",
                              "nan",
                              "NaN",
                              "+nan",
                              "-nan",
                              "3.1+e2",
                              "1e5",
                              "1E5",
                              "1e+5",
                              "1e-5",
                              "1e00005",
                              "1e000000000000005",
                              "1e-400",
                              "-1e-400",
                              "1e400",
                              "-1e400",
                              "1e38",
                              "3.4028234e38",
                              "3.4028235e38",
                              "3.4028236e38",
                              "-3.4028235e38",
                              "3.40282346638528859811704183484516925440e38",
                              "1e-38",
                              "1.17549435e-38",
                              "1e-40",
                              "-1e-40",
                              "1e-45",
                              "7e-46",
                              "-7e-46",
                              "1e-46",
                              "-1e-46",
                              "1e-320",
                              "9007199254740991",
                              "9007199254740992",
                              "9007199254740993",
                              "90071992547409.93",
                              "18446744073709551615",
                              "18446744073709551616",
                              "99999999999999999999",
                              "1e22",
                              "1e23",
                              "9007199254740993e22",
                              "1e-22",
                              "1e-23",
                              "123456789012345678901234567890",
                              "0.1",
                              "0.7",
                              "0.123456789012345678901234567890",
                              "1 2",
                              "1\t",
                              " 1",
                              "1_000",
                              "1'000",
                              "1d5",
                              "1f",
                              "1.5f",
                              "0b1",
                              "1.2.3",
                              "1e1.5",
                              "1e5e5"})
        expectSameFloat(token);
    expectSameFloat(std::string("1\0", 2));
    expectSameFloat(std::string("\0", 1));
}

// For a decimal near the middle of two floats, rounding to a double and then to a float differs from rounding
// once.
TEST(NumbersTest, FloatsAreRoundedThroughDouble) {
    expectSameFloat("1.00000005960464477540");
    expectSameFloat("1.000000059604644775390624999999");
    expectSameFloat("1.000000059604644775390625");
    expectSameFloat("1.000000059604644775390625000001");
    expectSameFloat("16777217");
    expectSameFloat("16777217.0000000001");
    expectSameFloat("16777216.999999999");
}

TEST(NumbersTest, DecimalsReadAsQStringReadsThem) {
    Spellings spellings(1);
    for (int i = scaled(1'000'000); i > 0; --i)
        expectSameFloat(spellings.decimal());
}

TEST(NumbersTest, PrintedValuesReadAsQStringReadsThem) {
    Spellings spellings(2);
    for (int i = scaled(500'000); i > 0; --i)
        expectSameFloat(spellings.printed());
}

TEST(NumbersTest, ScrambledTokensReadAsQStringReadsThem) {
    Spellings spellings(3);
    for (int i = scaled(1'000'000); i > 0; --i) {
        const std::string token = spellings.scramble();
        expectSameFloat(token);
        expectSameInt(token);
    }
}

TEST(NumbersTest, OrdinaryDecimalsNeedNoQString) {
    float value = 0.0F;
    for (const std::string token :
         {"0", "-0.000000", "1.5", "-12345.678901", "0.1234567890123456789", "1e-5", "2.5E+3"})
        EXPECT_TRUE(parseFloat(token.data(), token.data() + token.size(), value)) << token;
}

TEST(NumbersTest, OrdinaryIntegersNeedNoQString) {
    int value = 0;
    for (const std::string token : {"0", "-0", "7", "-12345678", "+123456789", "-999999999", "000000001"}) {
        ASSERT_TRUE(parseInt(token.data(), token.data() + token.size(), value)) << token;
        EXPECT_EQ(value, std::stoi(token)) << token;
    }
}

TEST(NumbersTest, TokensThatAreNoDecimalsLeaveTheValueAlone) {
    for (const std::string token : {"", "-", ".", "1e", "x", "nan", "1.0x", "\x80", "1\x80"}) {
        float value = 7.0F;
        EXPECT_FALSE(parseFloat(token.data(), token.data() + token.size(), value)) << token;
        EXPECT_EQ(value, 7.0F);
        int number = 7;
        EXPECT_FALSE(parseInt(token.data(), token.data() + token.size(), number)) << token;
        EXPECT_EQ(number, 7);
    }
}

TEST(NumbersTest, OddIntegersReadAsQStringReadsThem) {
    for (const char* token : {"",
                              "0",
                              "-0",
                              "+0",
                              "1",
                              "+1",
                              "-1",
                              "--1",
                              "+-1",
                              "-",
                              "+",
                              "1.",
                              "1e3",
                              "0x10",
                              "010",
                              "000000000000000000001",
                              "999999999",
                              "1000000000",
                              "2147483647",
                              "2147483648",
                              "-2147483648",
                              "-2147483649",
                              "4294967295",
                              "99999999999999999999",
                              "1,000",
                              "1 ",
                              " 1",
                              "3#x"})
        expectSameInt(token);
}

TEST(NumbersTest, RandomIntegersReadAsQStringReadsThem) {
    Spellings spellings(4);
    for (int i = scaled(500'000); i > 0; --i)
        expectSameInt(spellings.sign() + spellings.digits(12));
}

} // namespace Atelier::Vel
