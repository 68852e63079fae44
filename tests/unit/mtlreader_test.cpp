#include "import/mtl/mtlreader.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

namespace Atelier::Vel {

namespace {

using Kind = MtlReader::Kind;
using testing::ElementsAre;

struct Line {
    Kind kind = Kind::Unknown;
    bool ok = false;
    std::vector<float> values;
    QString text;
};

std::vector<Line> readAll(MtlReader& reader) {
    std::vector<Line> lines;
    for (reader.next(); reader.hasNext(); reader.next()) {
        Line line;
        line.ok = reader.read();
        line.kind = reader.kind();
        line.values.assign(reader.values(), reader.values() + 3);
        line.text = reader.text();
        lines.push_back(line);
    }
    return lines;
}

std::vector<Line> read(const QByteArray& utf8, bool skipUnknown = true) {
    QString text = QString::fromUtf8(utf8);
    QTextStream stream(&text);
    MtlReader reader(&stream, skipUnknown);
    return readAll(reader);
}

Line readOne(const QByteArray& utf8) {
    const std::vector<Line> lines = read(utf8);
    EXPECT_EQ(lines.size(), 1u) << utf8.toStdString();
    return lines.empty() ? Line() : lines.front();
}

} // namespace

TEST(MtlReaderTest, FirstReadComesBeforeTheFirstLine) {
    QString text = QStringLiteral("newmtl red\n");
    QTextStream stream(&text);
    MtlReader reader(&stream, true);
    EXPECT_EQ(reader.kind(), Kind::Unknown);
    EXPECT_TRUE(reader.hasNext());
    EXPECT_FALSE(reader.read());
    EXPECT_THAT(std::vector<float>(reader.values(), reader.values() + 3), ElementsAre(0, 0, 0));
    reader.next();
    EXPECT_TRUE(reader.read());
    EXPECT_EQ(reader.text(), "red");
    reader.next();
    EXPECT_EQ(reader.kind(), Kind::End);
    EXPECT_FALSE(reader.hasNext());
    EXPECT_FALSE(reader.read());
}

TEST(MtlReaderTest, EveryKeywordHasItsKind) {
    const std::vector<Line> lines = read("newmtl a\nKa 1 1 1\nKd 1 1 1\nKs 1 1 1\nNs 1\nd 1\n"
                                         "map_Kd a\nmap_Ks a\nmap_Ka a\nmap_Ns a\n");
    ASSERT_EQ(lines.size(), 10u);
    for (size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(static_cast<size_t>(lines[i].kind), i);
        EXPECT_TRUE(lines[i].ok);
    }
}

TEST(MtlReaderTest, CommentEndsALine) {
    EXPECT_THAT(readOne("Kd 1 0 0 # red").values, ElementsAre(1, 0, 0));
    EXPECT_THAT(readOne("Kd 1 0 0#red").values, ElementsAre(1, 0, 0));
    EXPECT_EQ(readOne("map_Kd a#b.png").text, "a");
    EXPECT_TRUE(read("  # Kd 1 0 0\n#\n\n   \n").empty());
}

TEST(MtlReaderTest, MapNamesAreThoseOfTheText) {
    EXPECT_EQ(readOne("map_Kd tex/a.png").text, "tex/a.png");
    EXPECT_EQ(readOne("map_Kd /abs/a.png").text, "/abs/a.png");
    EXPECT_EQ(readOne("map_Kd a/../b.png").text, "a/../b.png");
}

TEST(MtlReaderTest, OnlyTheFirstWordOfAMapCounts) {
    EXPECT_EQ(readOne("map_Kd -s 1 1 1 file.png").text, "-s");
    EXPECT_EQ(readOne("map_Ks my file.png").text, "my");
}

TEST(MtlReaderTest, UnknownKeywordsAreSkippedOnRequest) {
    EXPECT_TRUE(read("Ke 1 1 1\nkd 1 0 0\nillum 2\nNEWMTL x\n").empty());
    const std::vector<Line> lines = read("Ke 1 1 1\nkd 1 0 0\n", false);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].kind, Kind::Unknown);
    EXPECT_FALSE(lines[0].ok);
}

TEST(MtlReaderTest, EmptyLinesAreSkipped) {
    EXPECT_TRUE(read("# Kd 1 0 0\n#Kd 1 0 0\n#\n \t # Kd 1 0 0\n\n   \n\r\n\xC2\xA0\n", false).empty());
    const std::vector<Line> lines = read("x#\n#x\ny #", false);
    EXPECT_EQ(lines.size(), 2u);
}

TEST(MtlReaderTest, MissingOrMalformedOperandsFailTheLine) {
    for (const char* line :
         {"newmtl", "Kd 1 1", "Kd", "Ns x", "Ns", "d", "map_Kd", "Kd a b c", "Ns 1e", "Ns 1e400"})
        EXPECT_FALSE(readOne(line).ok) << line;
}

TEST(MtlReaderTest, NumbersEndAtTheFirstInvalidCharacter) {
    EXPECT_THAT(readOne("Kd 1-2-3").values, ElementsAre(1, -2, -3));
    EXPECT_EQ(readOne("Ns 0x10").values[0], 0.0F);
    EXPECT_EQ(readOne("Ns 1,5").values[0], 1.0F);
    EXPECT_EQ(readOne("Ns 1e40").values[0], std::numeric_limits<float>::infinity());
}

TEST(MtlReaderTest, WhiteSpaceAroundALineIsDropped) {
    EXPECT_THAT(readOne("\t \xC2\xA0 Kd\t1  0\xC2\xA0"
                        "0 \t")
                    .values,
                ElementsAre(1, 0, 0));
    EXPECT_EQ(readOne("  newmtl  r\xC3\xA9"
                      "d  ")
                  .text,
              QString::fromUtf8("r\xC3\xA9"
                                "d"));
}

TEST(MtlReaderTest, FilesReadLikeStrings) {
    const QByteArray text = "\xEF\xBB\xBFnewmtl r\xC3\xA9"
                            "d\r\nKd 1 0 0\r\n# x\r\n\r\nmap_Kd a.png\r\nd 0.5";
    const QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("a.mtl")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
    file.close();
    for (const qint64 blockBytes : {4, 5, 16, 1000}) {
        ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
        QTextStream stream(&file);
        LineSourceOptions limits;
        limits.blockBytes = blockBytes;
        MtlReader reader(&stream, true, limits);
        const std::vector<Line> lines = readAll(reader);
        ASSERT_EQ(lines.size(), 4u);
        EXPECT_EQ(lines[0].text, QString::fromUtf8("r\xC3\xA9"
                                                   "d"));
        EXPECT_THAT(lines[1].values, ElementsAre(1, 0, 0));
        EXPECT_EQ(lines[2].text, "a.png");
        EXPECT_EQ(lines[3].values[0], 0.5F);
        file.close();
    }
}

} // namespace Atelier::Vel
