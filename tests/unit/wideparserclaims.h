#pragma once

#include <cmath>

#include <gtest/gtest.h>

#include "lineparsers.h"

/// What holds for each wide parser by itself, without the parser of single lines that takes over after it.
namespace Atelier::Vel::Testing {

/// What a wide parser makes of a text.
inline ParsedLines parsedByItself(WideParser* parser, const QByteArray& text) {
    const LaidOutText lines(text);
    ParsedLines parsed;
    const char* const end = parser(lines.begin(), lines.end(), parsed.counts, *parsed.run);
    parsed.taken = static_cast<int>(end - lines.begin());
    return parsed;
}

/// A parser of a table row, or a skipped test if this processor lacks its instructions.
class WideParserClaims : public testing::Test {
protected:
    explicit WideParserClaims(WideParser* parser) : _parser(parser) {}
    void SetUp() override {
        if (_parser == nullptr)
            GTEST_SKIP() << "this processor lacks the instructions of the parser";
    }

    void expectValuesAndIndices() const {
        const ParsedLines parsed = parsedByItself(
            _parser, "v 1.5 -2.0 0.25\nvn 0.0 -0.0 1.0\nvt 0.5 0.125\nf 1/2/1 2/1/1 1/1/2\nv 7.0 8.0 9.0\n");
        const ObjRun& run = *parsed.run;
        const std::vector<float> positions(run.positions.items, run.positions.items + run.positions.size);
        EXPECT_EQ(positions, (std::vector<float>{1.5F, -2, 0.25F, 7, 8, 9}));
        const std::vector<float> texCoords(run.texCoords.items, run.texCoords.items + run.texCoords.size);
        EXPECT_EQ(texCoords, (std::vector<float>{0.5F, 0.125F}));
        EXPECT_TRUE(run.normals.size == 3 && std::signbit(run.normals.items[1])) << "-0 keeps its sign";
        EXPECT_EQ(parsed.counts.positions, 3U) << "one line before, two here";
        // Numbers count from 1 in the text, from 0 here.
        EXPECT_EQ(cornersOf(run, run.positionIndices), (std::vector<quint32>{0, 1, 0}));
        EXPECT_EQ(cornersOf(run, run.texCoordIndices), (std::vector<quint32>{1, 0, 0}));
        EXPECT_EQ(cornersOf(run, run.normalIndices), (std::vector<quint32>{0, 0, 1}));
    }

    /// Of each line, whether it stops there.
    void expectStopsAt(const char* line) const {
        const QByteArray plain = "v 1.0 2.0 3.0\nf 1 1 1\n";
        const ParsedLines parsed = parsedByItself(_parser, plain + line + '\n' + plain);
        EXPECT_EQ(parsed.taken, plain.size()) << line;
        EXPECT_EQ(parsed.run->positions.size, 3U) << line;
        EXPECT_EQ(parsed.run->cornerCounts.size, 1U) << line;
    }
    void expectStopsAtLinesThatAreNotPlain() const {
        for (const char* line :
             {"# note", "", "o name", "v 1 2", "v 1 2 3e5", "v 1 2 0x3", "v 1 2 1,5", "f 1 2 x", "f 1 2 1.5",
              "vx 1 2 3", "fo 1 2 3", "v 1 2 1.2.3", "f 1;1 2;2 3;3"})
            expectStopsAt(line);
    }

    void expectStopsBeforeTheRunOverflows() const {
        const QByteArray text =
            QByteArray("v 1.0 2.0 3.0\n").repeated(3 * static_cast<int>(ObjRun::kRecords));
        const ParsedLines parsed = parsedByItself(_parser, text);
        EXPECT_LE(parsed.run->positions.size, 3 * ObjRun::kRecords);
        EXPECT_EQ(static_cast<std::size_t>(parsed.taken), parsed.run->positions.size / 3 * 14);
        EXPECT_LT(parsed.taken, text.size());
    }

    void expectNothingOfAnEmptyText() const { EXPECT_EQ(parsedByItself(_parser, "").taken, 0); }

    WideParser* _parser;

private:
    /// The numbers of one kind at the corners of all faces.
    template<typename List>
    static std::vector<quint32> cornersOf(const ObjRun& run, const List& list) {
        return {list.items, list.items + run.positionIndices.size};
    }
};

} // namespace Atelier::Vel::Testing

/// The tests of one wide parser; `Find` returns it.
#define VELMODEL_WIDE_PARSER_TESTS(Name, Find)                                                               \
    class Name : public Testing::WideParserClaims {                                                          \
    protected:                                                                                               \
        Name() : WideParserClaims(Find()) {}                                                                 \
    };                                                                                                       \
    TEST_F(Name, ParsesValuesAndIndices) {                                                                   \
        expectValuesAndIndices();                                                                            \
    }                                                                                                        \
    TEST_F(Name, StopsAtLinesThatAreNotPlain) {                                                              \
        expectStopsAtLinesThatAreNotPlain();                                                                 \
    }                                                                                                        \
    TEST_F(Name, StopsBeforeTheRunOverflows) {                                                               \
        expectStopsBeforeTheRunOverflows();                                                                  \
    }                                                                                                        \
    TEST_F(Name, TakesNothingOfAnEmptyText) {                                                                \
        expectNothingOfAnEmptyText();                                                                        \
    }
