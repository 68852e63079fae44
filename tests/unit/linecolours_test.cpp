// The colours of "v" lines, by the reader of single lines and by each parser of plain lines.

#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <QtCore/QByteArray>
#include <QtCore/QTextStream>

#include <gmock/gmock.h>

#include "import/obj/objreader.h"
#include "lineparsers.h"
#include "nastytext.h"
#include "support/scale.h"

namespace Atelier::Vel {

namespace {

using Testing::allParsers;
using testing::ElementsAre;
using Testing::LaidOutText;
using Testing::LineParserTest;
using Testing::nameOf;
using Testing::NastyText;
using Testing::ParsedLines;
using Testing::scaled;
using Testing::wideParsers;

using Values = std::vector<float>;

ObjColour colourOf(const QByteArray& line) {
    QTextStream stream(line);
    const ObjReader reader(&stream, {}, nullptr);
    EXPECT_EQ(reader.kind(), ObjReader::Kind::Position) << line.toStdString();
    return reader.colour();
}

Values valuesOf(const ObjColour& colour) {
    return {colour.values, colour.values + colour.components};
}

Values valuesOf(const QByteArray& line) {
    return valuesOf(colourOf(line));
}

ParsedLines parseColoured(const QByteArray& text, WideParser* wideParser, char around = '7') {
    ParsedLines parsed;
    parsed.run->takesColours = true;
    parse(text, wideParser, around, parsed);
    return parsed;
}

template<typename T, size_t N>
std::vector<quint32> bitsOf(const FixedList<T, N>& list) {
    std::vector<quint32> bits(list.size);
    if (list.size != 0)
        std::memcpy(bits.data(), list.items, list.size * sizeof(T));
    return bits;
}

bool isPlain(const QByteArray& line, WideParser* wideParser) {
    return parseColoured(line + '\n', wideParser).taken == line.size() + 1;
}

class LineColoursTest : public LineParserTest {};
class WideColoursTest : public LineParserTest {};

} // namespace

TEST(ReaderColoursTest, LinesOfSixAndSevenNumbersHaveAColour) {
    EXPECT_THAT(valuesOf("v 1 2 3 0.5 0.25 1"), ElementsAre(0.5F, 0.25F, 1));
    EXPECT_THAT(valuesOf("v 1 2 3 0.5 0.25 1 0.75"), ElementsAre(0.5F, 0.25F, 1, 0.75F));
}

TEST(ReaderColoursTest, LinesOfOtherLengthsAreWhite) {
    for (const QByteArray line : {"v", "v 1", "v 1 2", "v 1 2 3", "v 1 2 3 0.5", "v 1 2 3 0.5 0.5",
                                  "v 1 2 3 0.5 0.5 0.5 0.5 0.5", "v 1 2 3 0 0 0 0 0 0 0 0 0 0 0 0"}) {
        const ObjColour colour = colourOf(line);
        EXPECT_EQ(colour.components, 0) << line.toStdString();
        EXPECT_THAT(colour.values, ElementsAre(1, 1, 1, 1)) << line.toStdString();
    }
}

TEST(ReaderColoursTest, ColourWithoutAlphaIsOpaque) {
    EXPECT_THAT(colourOf("v 1 2 3 0.5 0.25 0").values, ElementsAre(0.5F, 0.25F, 0, 1));
}

TEST(ReaderColoursTest, ValuesAreTakenAsTheyAre) {
    EXPECT_THAT(valuesOf("v 1 2 3 255 -1 1e6"), ElementsAre(255, -1, 1e6F));
    EXPECT_THAT(valuesOf("v 1 2 3 inf -INF 0.1 nan"),
                ElementsAre(HUGE_VALF, -HUGE_VALF, 0.1F, testing::IsNan()));
}

TEST(ReaderColoursTest, NumbersBeyondFloatsCount) {
    EXPECT_THAT(valuesOf("v 1 2 3 1e40 1e-60 1e-40"), ElementsAre(HUGE_VALF, 0, 1e-40F));
    EXPECT_THAT(valuesOf("v 1e40 1e-60 3 1 0 0"), ElementsAre(1, 0, 0));
}

TEST(ReaderColoursTest, AllWordsHaveToBeNumbers) {
    for (const QByteArray line :
         {"v 1 2 3 1 0 x", "v 1 2 x 1 0 0", "v 1 2 3 1 0 0x0", "v 1 2 3 1 0 0,5", "v 1 2 3 1 0 0 x",
          "v 1 2 3 1 0 0#", "v 1 2 3 1 0 1e400", "v 1 2 3 1 0 0 \\"})
        EXPECT_THAT(valuesOf(line), testing::IsEmpty()) << line.toStdString();
}

TEST(ReaderColoursTest, CommentDoesNotCount) {
    EXPECT_THAT(valuesOf("v 1 2 3 1 0.5 0 # 4"), ElementsAre(1, 0.5F, 0));
    EXPECT_THAT(valuesOf("v 1 2 3 1 0.5 0 #4"), ElementsAre(1, 0.5F, 0));
    EXPECT_THAT(valuesOf("v 1 2 3 # 1 0.5 0"), testing::IsEmpty());
}

TEST(ReaderColoursTest, AnyWhiteSpaceSeparatesNumbers) {
    EXPECT_THAT(valuesOf(" v\t1  2\v3 1\xC2\xA0"
                         "0.5\r 0 "),
                ElementsAre(1, 0.5F, 0));
}

TEST(ReaderColoursTest, PositionIsReadAsWithoutColours) {
    QTextStream stream(QByteArray("v 1 2 3 0.5 0.25 0.75\n"));
    ObjReader reader(&stream, {}, nullptr);
    EXPECT_EQ(reader.colour().components, 3);
    ASSERT_TRUE(reader.read());
    EXPECT_EQ(reader.colour().components, 3) << "in any order";
    EXPECT_THAT(Values(reader.values(), reader.values() + 3), ElementsAre(1, 2, 3));
}

TEST_P(LineColoursTest, LinesOfThreeToSevenDecimalsArePlain) {
    for (const char* line :
         {"v 1.5 -2.25 0.125", "v 1 2 3", "v 1.0 2.0 3.0 ", "v 1.0 2.0 3.0 1.0", "v 1.0 2.0 3.0 1.0 2.0",
          "v 1.5 -2.25 0.125 0.501961 0.501961 0.501961", "v 1.5 -2.25 0.125 0.5 0.25 0.125 -1.0",
          "v 1.0 2.0 3.0 1 0 0", "v 1 2 3 1 0 0 1", "v  1.0  2.0  3.0  1.0  0.5  0.5  1.0  ",
          "v 1.0 2.0 3.0 0.5 0.5 0.5\r", "v 1.0 2.0 3.0 0.5 0.5 0.5 \r"})
        EXPECT_TRUE(isPlain(line, _wideParser)) << line;
}

TEST_P(LineColoursTest, LinesWithAnythingElseAreNotTaken) {
    for (const char* line :
         {"v 1.0 2.0 3.0 # note", "v 1.0 2.0 3.0 1.0 0.5 0.5 # note", "v 1.0 2.0 3.0 x",
          "v 1.0 2.0 3.0 1.0 0.5 x", "v 1.0 2.0 3.0 1.0 0.5 0.5 0.5 0.5", "v 1.0 2.0 3.0 1.0 0.5 0.5#",
          "v 1.0 2.0 3.0 1.0 0.5 0.5\t1.0", "v 1.0 2.0 3.0 1.0 0.5 1e-3", "v 1.0 2.0 3.0 1.0 0.5 .5",
          "v 1.0 2.0 3.0 1.0 0.5 5.", "v 1.0 2.0 3.0 1.0 0.5 0.5 +1", "v 1.0 2.0 3.0 - 0.5 0.5",
          "v 1.0 2.0 3.0 1.0-0.5 0.5 1.0", "v 1.0 2.0 3.0 1.0 0.5 0.5 1\r5", "v 1.0 2.0"})
        EXPECT_FALSE(isPlain(line, _wideParser)) << line;
}

TEST_P(LineColoursTest, EachPositionHasFourValues) {
    const ParsedLines parsed = parseColoured("v 1.0 2.0 3.0 0.5 0.25 2\n"
                                             "v 4.0 5.0 6.0\n"
                                             "v 7.0 8.0 9.0 -0.5 255 0.25 0.125\n"
                                             "v 7.0 8.0 9.0 0.5 0.25\n",
                                             _wideParser);
    const ObjRun& run = *parsed.run;
    EXPECT_THAT(Values(run.positions.items, run.positions.items + run.positions.size),
                ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 7, 8, 9));
    EXPECT_THAT(Values(run.colours.items, run.colours.items + run.colours.size),
                ElementsAre(0.5F, 0.25F, 2, 1, 1, 1, 1, 1, -0.5F, 255, 0.25F, 0.125F, 1, 1, 1, 1));
    EXPECT_EQ(run.colourComponents, 4);
}

TEST_P(LineColoursTest, ComponentsAreTheMaximumOfTheLines) {
    const auto components = [this](const QByteArray& text) {
        return parseColoured(text, _wideParser).run->colourComponents;
    };
    const QByteArray none = "v 1.0 2.0 3.0\n";
    const QByteArray three = "v 1.0 2.0 3.0 0.5 0.5 0.5\n";
    EXPECT_EQ(components(none), 0);
    EXPECT_EQ(components(none + three + none), 3);
    EXPECT_EQ(components(three + "v 1.0 2.0 3.0 0.5 0.5 0.5 1.0\n" + three), 4);
}

TEST_P(LineColoursTest, ColoursAreIgnoredUnlessTheyAreWanted) {
    const ParsedLines parsed = Testing::parse("v 1.0 2.0 3.0 0.5 0.5 0.5\n", _wideParser);
    EXPECT_EQ(parsed.run->positions.size, 3U);
    EXPECT_EQ(parsed.run->colours.size, 0U);
    EXPECT_EQ(parsed.run->colourComponents, 0);
}

TEST_P(LineColoursTest, FirstLineOfItsKindIsNotTaken) {
    const LaidOutText text("v 1.0 2.0 3.0 0.5 0.5 0.5\n");
    const std::unique_ptr<ObjRun> run(new ObjRun);
    run->takesColours = true;
    ObjLineCounts counts = {0, 1, 1};
    EXPECT_EQ(parsePlainLines(text.begin(), text.end(), counts, *run, _wideParser), text.begin());
    EXPECT_EQ(run->positions.size + run->colours.size, 0U);
    EXPECT_EQ(counts.positions, 0U);
}

TEST_P(LineColoursTest, FullRunStops) {
    const QByteArray line = "v 1.0 2.0 3.0 0.5 0.5 0.5 1.0\n";
    const ParsedLines parsed = parseColoured(line.repeated(2000), _wideParser);
    EXPECT_EQ(parsed.taken, static_cast<int>(ObjRun::kRecords) * line.size());
    EXPECT_EQ(parsed.run->colours.size, ObjColour::kSize * ObjRun::kRecords);
    EXPECT_EQ(parsed.counts.positions, 1 + ObjRun::kRecords);
}

TEST_P(LineColoursTest, DecimalsAreThoseOfQt) {
    NastyText nasty(41);
    for (int i = scaled(20'000); i > 0; --i) {
        QByteArray line = "v";
        std::vector<float> numbers;
        for (unsigned int number = 6 + nasty.below(2); number > 0; --number) {
            const QByteArray decimal = nasty.decimal();
            line += ' ' + decimal;
            numbers.push_back(QString::fromLatin1(decimal).toFloat());
        }
        const ParsedLines parsed = parseColoured(line + '\n', _wideParser);
        if (parsed.taken == 0)
            continue;
        ASSERT_EQ(std::memcmp(parsed.run->positions.items, numbers.data(), 3 * sizeof(float)), 0)
            << line.toStdString();
        ASSERT_EQ(
            std::memcmp(parsed.run->colours.items, numbers.data() + 3, (numbers.size() - 3) * sizeof(float)),
            0)
            << line.toStdString();
        ASSERT_EQ(parsed.run->colourComponents, static_cast<int>(numbers.size()) - 3);
    }
}

// The portable parser takes the rest that a wide parser leaves: this costs only time and changes no result.
TEST_P(WideColoursTest, UsualLinesAreTakenWithoutThePortableParser) {
    for (const QByteArray line :
         {"v 1.5 -2.25 0.125", "v 1.5 -2.25 0.125 1.0", "v 1.5 -2.25 0.125 1", "v 1.5 -2.25 0.125 0.5 1",
          "v 1.5 -2.25 0.125 0.501961 0.501961 0.501961",
          "v 1.5 -2.25 0.125 0.501961 0.501961 0.501961 1.000000",
          "v -123456.654321 -123456.654321 -123456.654321 0.501961 0.501961 0.501961 1.0",
          "v 1.5 -2.25 0.125 1 0 0.5", "v 1.5 -2.25 0.125 1 0 0 1", "v 1.5 -2.25 0.125 127 -1 255"})
        for (const QByteArray end : {"\n", "\r\n"}) {
            const LaidOutText text((line + end).repeated(100));
            ParsedLines parsed;
            parsed.run->takesColours = true;
            EXPECT_EQ(_wideParser(text.begin(), text.end(), parsed.counts, *parsed.run), text.end())
                << line.toStdString();
        }
}

TEST_P(WideColoursTest, AgreeWithThePortableWay) {
    NastyText nasty(42);
    for (int i = scaled(20'000); i > 0; --i) {
        QByteArray text = nasty.below(2) == 0 ? nasty.plain(6) : nasty.damaged(nasty.plain(6));
        text += '\n';
        const char around = "7-./ \n"[nasty.below(6)];
        const int portable = parseColoured(text, nullptr).taken;
        ASSERT_GE(parseColoured(text, _wideParser, around).taken, portable) << text.toStdString();
        const ParsedLines a = parseColoured(text.left(portable), _wideParser, around);
        const ParsedLines b = parseColoured(text.left(portable), nullptr);
        ASSERT_EQ(a.taken, b.taken) << text.toStdString();
        ASSERT_EQ(bitsOf(a.run->positions), bitsOf(b.run->positions)) << text.toStdString();
        ASSERT_EQ(bitsOf(a.run->colours), bitsOf(b.run->colours)) << text.toStdString();
        ASSERT_EQ(a.run->colourComponents, b.run->colourComponents) << text.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Parsers, LineColoursTest, testing::ValuesIn(allParsers()), nameOf);
INSTANTIATE_TEST_SUITE_P(Parsers, WideColoursTest, testing::ValuesIn(wideParsers()), nameOf);

} // namespace Atelier::Vel
