#include "check/textbytes.h"

#include <random>

#include <QtCore/QBuffer>

#include <gmock/gmock.h>

#include "check/bytecounts.h"

namespace Atelier::Vel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// "code line:column" of each finding.
std::vector<std::string> findings(QByteArray text, qint64 blockBytes = 1 << 18, qint64 lineBytes = 100) {
    FindingLog log;
    QBuffer buffer(&text);
    buffer.open(QIODevice::ReadOnly);
    EXPECT_EQ(TextBytes("f", log, lineBytes).examine(buffer, blockBytes), QString());
    std::vector<std::string> all;
    for (const QVector<CheckFinding>& ofCode : log.findings())
        for (const CheckFinding& finding : ofCode)
            all.push_back(QStringLiteral("%1 %2:%3")
                              .arg(checkCodeName(finding.code))
                              .arg(finding.line)
                              .arg(finding.column)
                              .toStdString());
    return all;
}

TEST(TextBytesTest, LinesAreCountedInPlainBlocks) {
    EXPECT_THAT(findings("a\nb\n\nc\rd\n"), ElementsAre("carriage-return 4:2"));
}

TEST(TextBytesTest, LinesThatAreTooLongAreFound) {
    const QByteArray line(101, 'x');
    EXPECT_THAT(findings(line.left(100) + "\n"), IsEmpty());
    for (const qint64 blockBytes : {1, 7, 50, 1000}) {
        EXPECT_THAT(findings("a\n" + line + "\nb\n", blockBytes), ElementsAre("line-too-long 2:0"))
            << blockBytes;
        EXPECT_THAT(findings("a\nb\n" + line, blockBytes), ElementsAre("line-too-long 3:0")) << blockBytes;
        EXPECT_THAT(findings(line + "\n\xC2\xA0\n", blockBytes),
                    ElementsAre("line-too-long 1:0", "foreign-blank 2:1"))
            << blockBytes;
    }
}

TEST(TextBytesTest, BlockBoundariesMakeNoDifference) {
    const QByteArray text = QByteArray("\xEF\xBB\xBF"
                                       "a\r\n\xC3\xA4\xE2\x80\xA8 b\rc\0d\n#\xC2\xA0\0\n \t# \xC2\xA0\n"
                                       "x\r\r\ny\r\rz\nw\r",
                                       40);
    const std::vector<std::string> whole = findings(text);
    EXPECT_THAT(whole, ElementsAre("carriage-return 2:5", "carriage-return 6:2", "carriage-return 6:2",
                                   "null-character 2:6", "byte-order-mark 1:0", "foreign-blank 2:2"));
    for (qint64 blockBytes = 4; blockBytes < 60; ++blockBytes) {
        // Two carriage returns in sequence count as one at the end of a block.
        std::vector<std::string> found = findings(text, blockBytes);
        found.erase(std::unique(found.begin(), found.end()), found.end());
        std::vector<std::string> expected = whole;
        expected.erase(std::unique(expected.begin(), expected.end()), expected.end());
        EXPECT_EQ(found, expected) << blockBytes;
    }
}

TEST(TextBytesTest, ManyCarriageReturnsAreCounted) {
    FindingLog log;
    QByteArray text = QByteArray("v 1 2 3\r").repeated(1000) + "x";
    QBuffer buffer(&text);
    buffer.open(QIODevice::ReadOnly);
    TextBytes("f", log).examine(buffer, 100);
    ModelCheck check;
    log.moveTo(check);
    EXPECT_EQ(check.findings.size(), ModelCheck::kMaxFindings);
    EXPECT_EQ(check.counts.value(CheckCode::CarriageReturn), 1000U);
}

// The sums of long texts are made with vectors.
TEST(ByteCountsTest, LongTextsAreCountedLikeShortOnes) {
    std::mt19937 random(3);
    const QByteArray alphabet = "v \n0/19-,x";
    QByteArray text;
    for (int i = 0; i < 20'000; ++i)
        text += alphabet[static_cast<int>(random() % static_cast<unsigned int>(alphabet.size()))];
    WordCounts sum;
    TextContent content;
    for (int at = 0; at < text.size() - 1; ++at) {
        const WordCounts one = wordCountsOf(text.constData() + at, text.constData() + at + 1);
        sum.words += one.words;
        sum.letters += one.letters;
        content.lineFeeds += contentOf(text.constData() + at, text.constData() + at + 1).lineFeeds;
    }
    const WordCounts whole = wordCountsOf(text.constData(), text.constData() + text.size() - 1);
    EXPECT_EQ(whole.words, sum.words);
    EXPECT_EQ(whole.letters, sum.letters);
    EXPECT_TRUE(whole.hasOthers);
    EXPECT_EQ(contentOf(text.constData(), text.constData() + text.size() - 1).lineFeeds, content.lineFeeds);
}

TEST(ByteCountsTest, EveryByteIsRecognisedInLongTexts) {
    for (int byte = 0; byte < 256; ++byte) {
        QByteArray text(10'000, 'v');
        text[100] = static_cast<char>(byte);
        const TextContent content = contentOf(text.constData(), text.constData() + text.size());
        EXPECT_EQ(content.lineFeeds, byte == '\n' ? 1U : 0U) << byte;
        EXPECT_EQ(content.hasReturns, byte == '\r') << byte;
        EXPECT_EQ(content.hasOthers, byte >= 0x80 || byte == 0) << byte;
        const WordCounts counts = wordCountsOf(text.constData(), text.constData() + text.size() - 1);
        EXPECT_EQ(counts.letters, byte > '9' ? 9'999U : 9'998U) << byte;
        EXPECT_EQ(counts.words, byte <= ' ' ? 1U : 0U) << byte;
        EXPECT_EQ(counts.hasOthers, byte > ' ' && byte < '-') << byte;
    }
    QByteArray zeros(10'000, '1');
    zeros[5'000] = '/';
    EXPECT_FALSE(wordCountsOf(zeros.constData(), zeros.constData() + zeros.size() - 1).hasOthers);
    zeros[5'001] = '0';
    EXPECT_TRUE(wordCountsOf(zeros.constData(), zeros.constData() + zeros.size() - 1).hasOthers);
}

} // namespace

} // namespace Atelier::Vel
