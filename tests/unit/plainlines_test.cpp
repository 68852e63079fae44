#include "import/obj/plainlines.h"

#include <cstring>
#include <memory>
#include <vector>

#include <QtCore/QByteArray>

#include <gmock/gmock.h>

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
using Testing::parse;
using Testing::ParsedLines;
using Testing::scaled;
using Testing::wideParsers;

quint32 bitsOf(float value) {
    quint32 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

template<typename T, size_t N>
std::vector<quint32> bitsOf(const FixedList<T, N>& list) {
    std::vector<quint32> bits(list.size);
    if (list.size != 0)
        std::memcpy(bits.data(), list.items, list.size * sizeof(T));
    return bits;
}

std::vector<std::vector<quint32>> bitsOf(const ParsedLines& parsed) {
    const ObjRun& run = *parsed.run;
    return {bitsOf(run.positions),
            bitsOf(run.colours),
            bitsOf(run.normals),
            bitsOf(run.texCoords),
            bitsOf(run.cornerCounts),
            bitsOf(run.positionIndices),
            bitsOf(run.texCoordIndices),
            bitsOf(run.normalIndices),
            {static_cast<quint32>(run.colourComponents), parsed.counts.positions, parsed.counts.normals,
             parsed.counts.texCoords}};
}

void expectSame(const ParsedLines& a, const ParsedLines& b, const QByteArray& text) {
    ASSERT_EQ(a.taken, b.taken) << text.toStdString();
    ASSERT_EQ(bitsOf(a), bitsOf(b)) << text.toStdString();
}

// The wide parsers accept longer decimals. Text that both accept must give the same result.
void expectAgreement(const QByteArray& text, WideParser* wideParser, char around) {
    const int portable = parse(text, nullptr).taken;
    ASSERT_GE(parse(text, wideParser, around).taken, portable) << text.toStdString();
    const QByteArray common = text.left(portable);
    expectSame(parse(common, wideParser, around), parse(common, nullptr), common);
}

bool isPlain(const QByteArray& line, WideParser* wideParser) {
    return parse(line + '\n', wideParser).taken == line.size() + 1;
}

class PlainLinesTest : public LineParserTest {};
class WideParserTest : public LineParserTest {};

// A number of up to 16 digits, with or without a point.
QByteArray longDecimal(NastyText& nasty) {
    QByteArray digits;
    for (int i = 1 + nasty.below(16); i > 0; --i)
        digits += static_cast<char>('0' + nasty.below(10));
    if (digits.size() > 1 && nasty.below(4) != 0)
        digits.insert(1 + nasty.below(digits.size() - 1), '.');
    return nasty.below(3) == 0 ? '-' + digits : digits;
}

// A face whose corners have the same shape, mostly, and whose numbers have any length.
QByteArray faceLine(NastyText& nasty) {
    static const char* const kShapes[] = {"%", "%/%", "%/%/%", "%//%", "%/", "%/%/"};
    const QByteArray shape = kShapes[nasty.below(6)];
    QByteArray line = "f";
    for (int corner = 1 + nasty.below(14); corner > 0; --corner) {
        line += ' ';
        for (char character : nasty.below(40) == 0 ? QByteArray(kShapes[nasty.below(6)]) : shape)
            line += character == '%'
                        ? QByteArray::number(nasty.below(2) == 0 ? nasty.below(100)
                                                                 : nasty.below(10) * nasty.below(10'000'000))
                        : QByteArray(1, character);
    }
    static const char* const kEnds[] = {"\n", "\n", "\r\n", " \n", "  \n", " \r\n", "\r \n", "#\n", "-1\n"};
    return line + kEnds[nasty.below(9)];
}

} // namespace

TEST_P(PlainLinesTest, OrdinaryLinesArePlain) {
    for (const char* line : {"v 1.5 -2.25 0.125",
                             "v 1 2 3",
                             "v  1.0  2.0  3.0",
                             "v 1.0 2.0 3.0 1.0",
                             "v 1.0 2.0 3.0 # note",
                             "v 0.1 0.2 0.3 ",
                             "v -0.000000 1234567.12345678 0.123456789012",
                             "vn 0.0 0.0 1.0",
                             "vn 0 0 1",
                             "vt 0.5 0.25",
                             "vt 0.5 0.25 0.0",
                             "f 1 2 3",
                             "f 1/2 2/3 3/4",
                             "f 1//2 2//3 3//4",
                             "f 1/2/3 2/3/4 3/4/5",
                             "f -1 -2 -3",
                             "f 0 1 2",
                             "f 1 2 3 ",
                             "f 1/2/3 2 3//4",
                             "f",
                             "f 1234567/1234567/1234567 1/1/1 2/2/2 3/3/3 4/4/4",
                             "v 1.0 2.0 3.0\r",
                             "f 1 2 3\r"})
        EXPECT_TRUE(isPlain(line, _wideParser)) << line;
}

TEST_P(PlainLinesTest, OtherLinesAreNotTaken) {
    for (const char* line :
         {"",          " v 1 2 3",   "v\t1 2 3",  "v 1 2",      "v 1 2 x",     "v 1 2 3x",
          "v 1 2 3#",  "v 1 2 3\r4", "v 1e5 2 3", "v +1 2 3",   "v .5 2 3",    "v 1. 2 3",
          "v 1-2 2 3", "v --1 2 3",  "v - 1 2",   "v nan 0 0",  "v 1.0-2 2 3", "v 9999999.999999999999 0 0",
          "vn 1 2",    "vt 1",       "vp 1 2",    "v1 2 3",     "vt1 2",       "vnx 1 2 3",
          "# f 1 2 3", "g x",        "f 1 x",     "f 1/",       "f 1//",       "f /1",
          "f 1/2/3/4", "f 12345678", "f +1",      "f 1 # note", "f 1#",        "f 1-2",
          "f1 2 3",    "f\t1 2 3",   "f 1\t2",    "f 1\r2",     "f 1 2 3 \r4", "usemtl a",
          "f 1/2-/3",  "f 1//-",     "\x80"})
        EXPECT_FALSE(isPlain(line, _wideParser)) << line;
}

TEST_P(PlainLinesTest, FirstLineOfAKindIsNotTaken) {
    const struct {
        const char* line;
        ObjLineCounts counts;
    } cases[] = {
        {"v 1.0 2.0 3.0\n", {0, 1, 1}}, {"vt 1.0 2.0\n", {1, 0, 1}}, {"vn 1.0 2.0 3.0\n", {1, 1, 0}}};
    for (const auto& [line, before] : cases) {
        const LaidOutText text(line);
        const std::unique_ptr<ObjRun> run(new ObjRun);
        ObjLineCounts counts = before;
        EXPECT_EQ(parsePlainLines(text.begin(), text.end(), counts, *run, _wideParser), text.begin()) << line;
        EXPECT_EQ(run->positions.size + run->texCoords.size + run->normals.size, 0u) << line;
        EXPECT_EQ(counts.positions, before.positions) << line;
        EXPECT_EQ(counts.texCoords, before.texCoords) << line;
        EXPECT_EQ(counts.normals, before.normals) << line;
    }
}

TEST_P(PlainLinesTest, ValuesAreThoseOfTheText) {
    const ParsedLines parsed = parse("v 1.5 -2.25 3\nvt 0.5 -0.0\nvn 0.1 0.7 -1234567.5\n", _wideParser);
    EXPECT_THAT(std::vector<float>(parsed.run->positions.items, parsed.run->positions.items + 3),
                ElementsAre(1.5F, -2.25F, 3));
    EXPECT_THAT(bitsOf(parsed.run->texCoords), ElementsAre(0x3F000000, 0x80000000));
    EXPECT_THAT(std::vector<float>(parsed.run->normals.items, parsed.run->normals.items + 3),
                ElementsAre(0.1F, 0.7F, -1234567.5F));
    EXPECT_EQ(parsed.counts.positions, 2u);
}

TEST_P(PlainLinesTest, IndicesCountBackFromTheLinesSoFar) {
    const ParsedLines parsed = parse("v 0.0 0.0 0.0\nf -1/-1/-1 2/0/-5\n", _wideParser);
    EXPECT_THAT(bitsOf(parsed.run->positionIndices), ElementsAre(1, 1));
    EXPECT_THAT(bitsOf(parsed.run->texCoordIndices), ElementsAre(0, kNoIndex));
    EXPECT_THAT(bitsOf(parsed.run->normalIndices), ElementsAre(0, static_cast<quint32>(-4)));
    EXPECT_THAT(bitsOf(parsed.run->cornerCounts), ElementsAre(2));
}

TEST_P(PlainLinesTest, LongFacesAreNotTaken) {
    EXPECT_TRUE(isPlain("f" + QByteArray(" 1").repeated(ObjRun::kPlainCorners), _wideParser));
    EXPECT_FALSE(isPlain("f" + QByteArray(" 1").repeated(ObjRun::kPlainCorners + 1), _wideParser));
}

TEST_P(PlainLinesTest, FullRunStops) {
    // A face may have up to kPlainCorners corners, which have to fit after the existing ones.
    constexpr size_t kFacesOfEight = (ObjRun::kCorners - ObjRun::kPlainCorners) / 8 + 1;
    const struct {
        QByteArray line;
        size_t lines;
    } cases[] = {{"v 1.0 2.0 3.0\n", ObjRun::kRecords},  {"vn 1.0 2.0 3.0\n", ObjRun::kRecords},
                 {"vt 1.0 2.0\n", ObjRun::kRecords},     {"f 1\n", ObjRun::kRecords},
                 {"f 1 2 3 4 5 6 7 8\n", kFacesOfEight}, {"f" + QByteArray(" 1").repeated(64) + "\n", 64}};
    for (const auto& [line, lines] : cases) {
        const ParsedLines parsed = parse(line.repeated(2000), _wideParser);
        EXPECT_EQ(parsed.taken, static_cast<int>(lines) * line.size()) << line.toStdString();
        EXPECT_TRUE(parsed.run->isFull()) << line.toStdString();
    }
}

TEST(LineParsersTest, WidestParserThatTheProcessorRunsIsUsed) {
    if (findAvx512Parser() != nullptr)
        EXPECT_EQ(findWideParser(), findAvx512Parser());
    else
        EXPECT_EQ(findWideParser(), findSse41Parser());
}

// The portable parser takes the rest that a wide parser leaves: this costs only time and changes no result.
TEST_P(WideParserTest, TakesOrdinaryLinesByItself) {
    for (const QByteArray line :
         {"v 1.5 -2.25 0.125", "v 123456.789012 0.1 0.000001", "v 1.0 2.0 3.0 1.0", "vn 0.0 -0.5 1.0",
          "vt 0.5 0.25", "vt 0.5 0.25 0.0", "f 1 2 3", "f 1 2 3 4", "f 1/2 2/3 3/4", "f 1/2 2/3 3/4 4/5 ",
          "f 1/2/3 2/3/4 3/4/5", "f 1234567/7654321/1 2/3/4 3/4/5 4/5/6 5/6/7 6/7/8",
          "f 123456/123456/123456 234567/234567/234567 345678/345678/345678",
          "f 123456/123456/123456 234567/234567/234567 345678/345678/345678 456789/456789/456789"})
        for (const QByteArray end : {"\n", "\r\n"}) {
            const LaidOutText text((line + end).repeated(100));
            ParsedLines parsed;
            EXPECT_EQ(_wideParser(text.begin(), text.end(), parsed.counts, *parsed.run), text.end())
                << line.toStdString();
        }
}

TEST_P(WideParserTest, AgreesWithThePortableWay) {
    NastyText nasty(31);
    for (int i = scaled(20'000); i > 0; --i) {
        QByteArray text = nasty.below(2) == 0 ? nasty.plain(6) : nasty.damaged(nasty.plain(6));
        text = nasty.below(20) == 0 ? nasty.noise(100) : text;
        const char around = "7-./ \n"[nasty.below(6)];
        ASSERT_NO_FATAL_FAILURE(expectAgreement(text + '\n', _wideParser, around));
    }
}

TEST_P(WideParserTest, AgreesOnDecimalsOfEveryLength) {
    NastyText nasty(32);
    for (int i = scaled(20'000); i > 0; --i) {
        QByteArray text;
        for (int line = 0; line < 5; ++line)
            text += "v " + nasty.decimal() + " " + nasty.decimal() + " " + nasty.decimal() + "\n";
        ASSERT_NO_FATAL_FAILURE(expectAgreement(text, _wideParser, '7'));
    }
}

TEST_P(WideParserTest, ReadsLongDecimalsAsQtDoes) {
    NastyText nasty(33);
    for (int i = scaled(20'000); i > 0; --i) {
        const QByteArray decimals[3] = {longDecimal(nasty), longDecimal(nasty), longDecimal(nasty)};
        const QByteArray line = "vn " + decimals[0] + ' ' + decimals[1] + ' ' + decimals[2] + '\n';
        const ParsedLines parsed = parse(line, _wideParser);
        if (parsed.taken == 0)
            continue;
        std::vector<quint32> expected;
        for (const QByteArray& decimal : decimals)
            expected.push_back(bitsOf(QString::fromLatin1(decimal).toFloat()));
        ASSERT_EQ(bitsOf(parsed.run->normals), expected) << line.toStdString();
    }
}

TEST_P(WideParserTest, AgreesOnFacesOfEveryShape) {
    NastyText nasty(34);
    for (int i = scaled(20'000); i > 0; --i) {
        QByteArray text;
        for (int face = 0; face < 3; ++face)
            text += faceLine(nasty);
        ASSERT_NO_FATAL_FAILURE(expectAgreement(text, _wideParser, "7 /\n"[nasty.below(4)]));
    }
}

INSTANTIATE_TEST_SUITE_P(Parsers, PlainLinesTest, testing::ValuesIn(allParsers()), nameOf);
INSTANTIATE_TEST_SUITE_P(Parsers, WideParserTest, testing::ValuesIn(wideParsers()), nameOf);

} // namespace Atelier::Vel
