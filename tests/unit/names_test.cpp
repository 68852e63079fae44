#include "import/text/names.h"

#include <gmock/gmock.h>

namespace Atelier::Vel {

namespace {

using testing::ElementsAre;

} // namespace

TEST(NamesTest, CommentBeginsAtTheStartOrAfterWhiteSpace) {
    EXPECT_EQ(withoutComment("red # the red"), "red");
    EXPECT_EQ(withoutComment("red\t#x"), "red");
    EXPECT_EQ(withoutComment("Mat#1"), "Mat#1");
    EXPECT_EQ(withoutComment("Mat#1 #2"), "Mat#1");
    EXPECT_EQ(withoutComment("#1"), "");
    EXPECT_EQ(withoutComment("  red  "), "red");
    EXPECT_EQ(withoutComment(""), "");
}

TEST(NamesTest, OnlyAPairOfQuotesAroundAllIsRemoved) {
    EXPECT_EQ(unquoted("\"my red\""), "my red");
    EXPECT_EQ(unquoted("'my red'"), "my red");
    EXPECT_EQ(unquoted("\"\""), "");
    for (const char* kept : {"my red", "\"", "\"my", "my\"", "\"a\" \"b\"", "\"a'", "a \"b\"", ""})
        EXPECT_EQ(unquoted(kept), kept);
}

TEST(NamesTest, WordsEndAtWhiteSpaceOrAtTheirQuote) {
    EXPECT_THAT(wordsOf(" a.mtl\t b.mtl "), ElementsAre("a.mtl", "b.mtl"));
    EXPECT_THAT(wordsOf("\"a b.mtl\" 'c d.mtl' e"), ElementsAre("a b.mtl", "c d.mtl", "e"));
    EXPECT_THAT(wordsOf("\"a b"), ElementsAre("\"a", "b"));
    EXPECT_THAT(wordsOf("o'neil d'arc"), ElementsAre("o'neil", "d'arc"));
    EXPECT_TRUE(wordsOf(" \t").isEmpty());
}

TEST(NamesTest, CandidatesGoFromTheWholeToTheFirstWord) {
    EXPECT_THAT(nameCandidates("my red # 1"), ElementsAre("my red # 1", "my red", "my"));
    EXPECT_THAT(nameCandidates("\"my red\" # 1"), ElementsAre("\"my red\" # 1", "my red"));
    EXPECT_THAT(nameCandidates("red"), ElementsAre("red"));
    EXPECT_THAT(nameCandidates(""), ElementsAre(""));
}

} // namespace Atelier::Vel
