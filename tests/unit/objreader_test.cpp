#include "import/obj/objreader.h"

#include <array>
#include <memory>
#include <vector>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include "lineparsers.h"
#include "literal/literalobjreader.h"
#include "nastytext.h"
#include "objrecords.h"
#include "support/scale.h"

namespace Atelier::Vel {

namespace {

using Kind = ObjReader::Kind;
using Testing::allParsers;
using Testing::Colours;
using Testing::Content;
using Testing::contentInRuns;
using Testing::contentOf;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::LineParser;
using Testing::LiteralObjReader;
using Testing::NastyText;
using Testing::Record;
using Testing::scaled;
using Testing::takeAll;

constexpr qint64 kBlockBytes = qint64(256) * 1024;

/// A file on disk, because readers have a fast path for files.
class ObjReaderTest : public testing::Test {
protected:
    void write(const QByteArray& text) {
        // Closing a file that was truncated to zero may flush it to the disk; a new file is faster.
        QFile::remove(path());
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    QString path() const { return _directory.filePath(QStringLiteral("text.obj")); }

    std::vector<Record> read(const QByteArray& text, const LineSourceOptions& limits = {}) {
        write(text);
        return readAgain(limits);
    }
    std::vector<Record> readAgain(const LineSourceOptions& limits = {}) {
        QFile file(path());
        file.open(QIODevice::ReadOnly | QIODevice::Text);
        QTextStream stream(&file);
        ObjReader reader(&stream, limits);
        return takeAll(reader);
    }
    Content readInRuns(const LineSourceOptions& limits, WideParser* wideParser, Colours colours) {
        QFile file(path());
        file.open(QIODevice::ReadOnly | QIODevice::Text);
        QTextStream stream(&file);
        ObjReader reader(&stream, limits, wideParser);
        const auto run = std::make_unique<ObjRun>();
        run->takesColours = colours == Colours::Read;
        return contentInRuns(reader, *run);
    }
    std::vector<Record> readLiterally(const QByteArray& text) {
        write(text);
        QFile file(path());
        file.open(QIODevice::ReadOnly | QIODevice::Text);
        QTextStream stream(&file);
        LiteralObjReader reader(&stream);
        return takeAll(reader);
    }
    /// Uses every parser that the processor runs and names it on failure.
    void expectRunsAsLiterally(const LineSourceOptions& limits, const std::vector<Record>& expected) {
        for (const LineParser& parser : allParsers()) {
            WideParser* const wideParser = parser.find == nullptr ? nullptr : parser.find();
            const bool isThere = parser.find == nullptr || wideParser != nullptr;
            for (const Colours colours : {Colours::Ignored, Colours::Read})
                ASSERT_TRUE(!isThere ||
                            readInRuns(limits, wideParser, colours) == contentOf(expected, colours))
                    << parser.name;
        }
    }
    void expectAsLiterally(const QByteArray& text, std::initializer_list<qint64> blockSizes = {kBlockBytes}) {
        const std::vector<Record> expected = readLiterally(text);
        for (const qint64 blockBytes : blockSizes) {
            LineSourceOptions limits;
            limits.blockBytes = blockBytes;
            ASSERT_NO_FATAL_FAILURE(expectRunsAsLiterally(limits, expected))
                << "block of " << blockBytes << ", text:\n"
                << text.left(4000).toStdString();
            ASSERT_EQ(readAgain(limits), expected) << "block of " << blockBytes << ", text:\n"
                                                   << text.left(4000).toStdString();
        }
    }
    Record readOne(const QByteArray& line) {
        const std::vector<Record> records = read(line);
        EXPECT_EQ(records.size(), 1u);
        return records.empty() ? Record() : records.front();
    }

private:
    QTemporaryDir _directory;
};

std::array<quint32, 3> corner(quint32 position, quint32 texCoord = kNoIndex, quint32 normal = kNoIndex) {
    return {position, texCoord, normal};
}

} // namespace

TEST_F(ObjReaderTest, CommentsAndBlankLinesGiveNoRecords) {
    EXPECT_TRUE(read("# a comment\n\n   \t\n  # another\n").empty());
    EXPECT_TRUE(read("").empty());
}

TEST_F(ObjReaderTest, PositionMayBeIndentedAndSpacedFreely) {
    const Record record = readOne("   v  1 2\t3");
    EXPECT_EQ(record.kind, Kind::Position);
    EXPECT_THAT(record.values, ElementsAre(1, 2, 3));
    EXPECT_TRUE(record.ok);
}

TEST_F(ObjReaderTest, NamesOfPartsAreReadIfTheyAreWanted) {
    QTextStream stream(QByteArray("g\no  a b # c \nG x\ngx y\ng\tx\nv 1 2 3\n"));
    ObjReader reader(&stream, {}, nullptr, {false, true});
    std::vector<std::pair<Kind, QString>> records;
    for (; reader.hasNext(); reader.next()) {
        EXPECT_TRUE(reader.read());
        records.emplace_back(reader.kind(), reader.text());
    }
    EXPECT_THAT(records, ElementsAre(std::pair(Kind::Group, QString()), std::pair(Kind::Object, "a b # c"),
                                     std::pair(Kind::Group, "x"), std::pair(Kind::Position, "x")));
    EXPECT_EQ(read("o a\ng b\nv 1 2 3\n").size(), 1U) << "otherwise they are skipped";
}

TEST_F(ObjReaderTest, KeywordsInAnotherCaseAreSkipped) {
    EXPECT_TRUE(read("V 1 2 3\nVN 1 2 3\nF 1 2 3\nUseMtl red\n").empty());
}

TEST_F(ObjReaderTest, FourthValueOfAPositionIsIgnored) {
    EXPECT_THAT(readOne("v 1 2 3 4").values, ElementsAre(1, 2, 3));
}

TEST_F(ObjReaderTest, WordsInPlaceOfNumbersAreZeros) {
    const Record record = readOne("v a b c");
    EXPECT_THAT(record.values, ElementsAre(0, 0, 0));
    EXPECT_TRUE(record.ok);
}

TEST_F(ObjReaderTest, MissingNumbersAreZeros) {
    const std::vector<Record> records = read("v 1 2 3\nv 4\nvn\nvt 1\n");
    ASSERT_EQ(records.size(), 4u);
    EXPECT_THAT(records[1].values, ElementsAre(4, 0, 0));
    EXPECT_THAT(records[2].values, ElementsAre(0, 0, 0));
    EXPECT_THAT(records[3].values, ElementsAre(1, 0, 0));
}

TEST_F(ObjReaderTest, TextureCoordinateDoesNotSetZ) {
    const std::vector<Record> records = read("v 7 8 9\nvt 0.5 0.25 1\n");
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[1].kind, Kind::TexCoord);
    EXPECT_THAT(records[1].values, ElementsAre(0.5F, 0.25F, 9));
}

TEST_F(ObjReaderTest, MissingCornerPartsHaveNoIndex) {
    EXPECT_THAT(readOne("f 1 2 3").corners, ElementsAre(corner(0), corner(1), corner(2)));
    EXPECT_THAT(readOne("f 1/4 2/5 3/6").corners, ElementsAre(corner(0, 3), corner(1, 4), corner(2, 5)));
    EXPECT_THAT(readOne("f 1//7 2//8 3//9").corners,
                ElementsAre(corner(0, kNoIndex, 6), corner(1, kNoIndex, 7), corner(2, kNoIndex, 8)));
    EXPECT_THAT(readOne("f 1/2/3").corners, ElementsAre(corner(0, 1, 2)));
    EXPECT_THAT(readOne("f 1/ 1// 1/2/").corners, ElementsAre(corner(0), corner(0), corner(0, 1)));
}

TEST_F(ObjReaderTest, NegativeIndicesCountBackFromTheFace) {
    const QByteArray ten = QByteArray("v 0 0 0\n").repeated(10);
    const std::vector<Record> records = read(ten + "f -1 -2 -3\n" + ten);
    EXPECT_THAT(records[10].corners, ElementsAre(corner(9), corner(8), corner(7)));
}

TEST_F(ObjReaderTest, NegativeIndicesCountEachKindSeparately) {
    const std::vector<Record> records =
        read("v 0 0 0\nvt 0 0\nvt 0 0\nvn 0 0 0\nvn 0 0 0\nvn 0 0 0\nf -1/-1/-1\n");
    EXPECT_THAT(records.back().corners, ElementsAre(corner(0, 1, 2)));
}

TEST_F(ObjReaderTest, IndicesAreNotCheckedAgainstAnyRange) {
    EXPECT_THAT(
        readOne("f 100 -5 2147483647 -2147483648").corners,
        ElementsAre(corner(99), corner(static_cast<quint32>(-5)), corner(0x7FFFFFFE), corner(0x80000000)));
}

TEST_F(ObjReaderTest, IndexZeroIsNoIndex) {
    EXPECT_THAT(readOne("f 0 1 2").corners, ElementsAre(corner(kNoIndex), corner(0), corner(1)));
    EXPECT_THAT(readOne("f -0/0/+0").corners, ElementsAre(corner(kNoIndex)));
}

TEST_F(ObjReaderTest, CommentEndsAFace) {
    const Record record = readOne("f 1 2 # note");
    EXPECT_TRUE(record.ok);
    EXPECT_THAT(record.corners, ElementsAre(corner(0), corner(1)));
    EXPECT_FALSE(readOne("f 1 2 3#x").ok);
}

TEST_F(ObjReaderTest, FaceWithoutCornersIsAFace) {
    const Record record = readOne("f");
    EXPECT_TRUE(record.ok);
    EXPECT_TRUE(record.corners.empty());
}

TEST_F(ObjReaderTest, CornerThatIsNoIntegerFailsTheFace) {
    for (const char* line :
         {"f 1 x 3", "f /1", "f 1.0", "f 1 2 \\", "f 2147483648", "f 1/x", "f 1//x", "f --1", "f //"})
        EXPECT_FALSE(readOne(line).ok) << line;
}

TEST_F(ObjReaderTest, FourthPartOfACornerIsIgnored) {
    EXPECT_THAT(readOne("f 1/2/3/x 4/5/6/7/8").corners, ElementsAre(corner(0, 1, 2), corner(3, 4, 5)));
}

TEST_F(ObjReaderTest, LibraryNamesAreThoseOfTheText) {
    EXPECT_EQ(readOne("mtllib a.mtl b.mtl").text, "a.mtl");
    EXPECT_EQ(readOne("mtllib /abs/m.mtl").text, "/abs/m.mtl");
    EXPECT_EQ(readOne("mtllib ../x/../m.mtl").text, "../x/../m.mtl");
    EXPECT_EQ(readOne("mtllib").text, QString());
}

TEST_F(ObjReaderTest, MaterialNameIsOneToken) {
    EXPECT_EQ(readOne("usemtl red # note").text, "red");
    EXPECT_EQ(readOne("usemtl r\xC3\xA9"
                      "d")
                  .text,
              QString::fromUtf8("r\xC3\xA9"
                                "d"));
    EXPECT_EQ(readOne("usemtl").text, "");
}

TEST_F(ObjReaderTest, OtherStatementsAreSkipped) {
    EXPECT_TRUE(read("o cube\ng a b\ns off\nl 1 2\np 1\nvp 0 0\ncurv2 1 2\nf1 2 3\nvnormal\n").empty());
}

TEST_F(ObjReaderTest, SmoothingLinesAreReadOnlyIfWanted) {
    const QByteArray text = "s 1\nv 1 2 3\ns off # flat\nsmooth 1\n s\t2 3\nS 1\ns\n";
    EXPECT_EQ(read(text).size(), 1U);
    QFile file(path());
    file.open(QIODevice::ReadOnly | QIODevice::Text);
    QTextStream stream(&file);
    ObjReader reader(&stream, {}, findWideParser(), {true, false});
    const std::vector<Record> records = takeAll(reader);
    std::vector<std::string> groups;
    for (const Record& record : records)
        if (record.kind == Kind::SmoothingGroup && record.ok)
            groups.push_back(record.text.toStdString());
    EXPECT_THAT(groups, ElementsAre("1", "off", "2", ""));
    EXPECT_EQ(records.size(), 5U);
}

TEST_F(ObjReaderTest, BackslashDoesNotContinueALine) {
    const std::vector<Record> records = read("f 1 2 \\\n 3 4\nv 1 2 3\n");
    ASSERT_EQ(records.size(), 2u);
    EXPECT_FALSE(records[0].ok);
    EXPECT_EQ(records[1].kind, Kind::Position);
}

TEST_F(ObjReaderTest, CarriageReturnsAreRemoved) {
    EXPECT_THAT(readOne("v 1 2 3\r\n").values, ElementsAre(1, 2, 3));
    EXPECT_THAT(readOne("f 1 2\r3\n").corners, ElementsAre(corner(0), corner(22)));
    EXPECT_THAT(readOne("v 1 2 3\rv 4 5 6\r").values, ElementsAre(1, 2, 0)); // "3v" is no number
}

TEST_F(ObjReaderTest, ReadBeforeNextKeepsTheRecord) {
    write("f 1 2 3\n");
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    QTextStream stream(&file);
    ObjReader reader(&stream);
    EXPECT_TRUE(reader.read());
    EXPECT_TRUE(reader.read());
    EXPECT_EQ(reader.cornerCount(), 3);
    reader.next();
    EXPECT_FALSE(reader.hasNext());
    EXPECT_FALSE(reader.read());
}

TEST_F(ObjReaderTest, StreamErrorFailsEveryRecord) {
    write("v 1 2 3\nf 1 2 3\nusemtl red\n");
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    QTextStream stream(&file);
    ObjReader reader(&stream);
    stream.setStatus(QTextStream::ReadCorruptData);
    for (; reader.hasNext(); reader.next())
        EXPECT_FALSE(reader.read());
}

TEST_F(ObjReaderTest, StreamErrorFailsEveryRecordOfARunToo) {
    write("v 1 2 3\nv 1 2 3\nf 1 2 3\nf 1 2 3\n");
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    QTextStream stream(&file);
    ObjReader reader(&stream);
    stream.setStatus(QTextStream::ReadCorruptData);
    const auto run = std::make_unique<ObjRun>();
    const Content content = contentInRuns(reader, *run);
    EXPECT_EQ(content.dropped, 2u);
    EXPECT_THAT(content.cornerCounts, IsEmpty());
}

TEST_F(ObjReaderTest, PlainLinesGoStraightIntoARun) {
    write("v 1 2 3\n" + QByteArray("v 1.0 2.0 3.0\n").repeated(10) + "usemtl red\nf 1 2 3\n");
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    QTextStream stream(&file);
    ObjReader reader(&stream);
    const auto run = std::make_unique<ObjRun>();
    EXPECT_EQ(reader.kind(), Kind::Position);
    reader.next(*run);
    EXPECT_EQ(reader.kind(), Kind::UseMaterial);
    EXPECT_EQ(run->positions.size, 30u);
    reader.next(*run);
    EXPECT_EQ(reader.kind(), Kind::None);
    EXPECT_FALSE(reader.read());
    EXPECT_EQ(run->cornerCounts.size, 1u);
    reader.next(*run);
    EXPECT_EQ(reader.kind(), Kind::End);
    EXPECT_FALSE(reader.read());
}

TEST_F(ObjReaderTest, FullRunIsReturnedBeforeTheNextLine) {
    write("vt 1 2\n" + QByteArray("vt 1.0 2.0\n").repeated(ObjRun::kRecords + 1));
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    QTextStream stream(&file);
    ObjReader reader(&stream);
    const auto run = std::make_unique<ObjRun>();
    reader.next(*run);
    EXPECT_EQ(reader.kind(), Kind::None);
    EXPECT_EQ(run->texCoords.size, 2 * ObjRun::kRecords);
    run->texCoords.size = 0;
    reader.next(*run);
    EXPECT_EQ(reader.kind(), Kind::None);
    EXPECT_EQ(run->texCoords.size, 2u);
    reader.next(*run);
    EXPECT_EQ(reader.kind(), Kind::End);
}

TEST_F(ObjReaderTest, StreamsOverOtherDevicesReadTheSame) {
    QString text = QString::fromUtf8("v 1 2 3\r\nusemtl r\xC3\xA9"
                                     "d\nf 1 2\xC2\xA0"
                                     "3\n");
    QTextStream ofString(&text);
    ObjReader reader(&ofString);
    const std::vector<Record> records = takeAll(reader);
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[1].text, QString::fromUtf8("r\xC3\xA9"
                                                 "d"));
    EXPECT_EQ(records[2].corners.size(), 3u);
}

TEST_F(ObjReaderTest, StreamsOwnCodecIsRespected) {
    write("usemtl r\xE9"
          "d\n");
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    QTextStream stream(&file);
    stream.setCodec("ISO-8859-1");
    ObjReader reader(&stream);
    EXPECT_EQ(takeAll(reader).front().text, QString::fromLatin1("r\xE9"
                                                                "d"));
}

TEST_F(ObjReaderTest, PartlyReadStreamContinuesAtItsPosition) {
    write("v 1 2 3\nv 4 5 6\n");
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    QTextStream stream(&file);
    stream.readLine();
    ObjReader reader(&stream);
    const std::vector<Record> records = takeAll(reader);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_THAT(records[0].values, ElementsAre(4, 5, 6));
}

TEST_F(ObjReaderTest, NastyTextReadsAsLiterally) {
    NastyText nasty(1);
    for (int i = scaled(1500); i > 0; --i)
        expectAsLiterally(nasty.obj(30), {4, 7, 64, kBlockBytes});
}

TEST_F(ObjReaderTest, DamagedTextReadsAsLiterally) {
    NastyText nasty(2);
    for (int i = scaled(1000); i > 0; --i)
        expectAsLiterally(nasty.damaged(nasty.obj(30)), {5, kBlockBytes});
}

TEST_F(ObjReaderTest, EncodedTextReadsAsLiterally) {
    NastyText nasty(3);
    for (int i = scaled(1000); i > 0; --i)
        expectAsLiterally(nasty.encoded(nasty.obj(20)), {4, kBlockBytes});
}

TEST_F(ObjReaderTest, NoiseReadsAsLiterally) {
    NastyText nasty(4);
    for (int i = scaled(2000); i > 0; --i)
        expectAsLiterally(nasty.noise(200), {4, 33, kBlockBytes});
}

// The stream decodes 16 KiB at a time; malformed text that is split there decodes differently.
TEST_F(ObjReaderTest, TextAcrossTheStreamsBlocksReadsAsLiterally) {
    NastyText nasty(5);
    for (int i = scaled(600); i > 0; --i) {
        QByteArray text = QByteArray("# filler\n").repeated(1800) + "usemtl ";
        text += QByteArray(16384 - text.size() - static_cast<int>(nasty.below(5)), 'x') + nasty.foreign(8) +
                nasty.noise(60);
        expectAsLiterally(text, {4096, 16384, kBlockBytes});
    }
}

TEST_F(ObjReaderTest, EveryBlockBoundaryReadsAsLiterally) {
    const QByteArray text = "\xEF\xBB\xBFv 1.5 -2.25 3\r\nvn 0 0 1\nvt 0.5 0.25\nusemtl r\xC3\xA9"
                            "d\nf 1/1/1 -1/-1/-1 1//1\n"
                            "\n# \xE2\x98\x83 snow\nf 1 2\r3\nv 1e-5 2 3 \xC2\xA0 4\nf 1 2 3 # end\nv 9 8 7";
    std::vector<Record> expected = readLiterally(text);
    for (qint64 blockBytes = 4; blockBytes < text.size() + 2; ++blockBytes) {
        LineSourceOptions limits;
        limits.blockBytes = blockBytes;
        ASSERT_EQ(readAgain(limits), expected) << blockBytes;
        ASSERT_NO_FATAL_FAILURE(expectRunsAsLiterally(limits, expected)) << blockBytes;
    }
}

TEST_F(ObjReaderTest, LongLinesReadAsLiterally) {
    QByteArray face = "f";
    for (int i = 1; i <= 150'000; ++i)
        face += ' ' + QByteArray::number(i);
    expectAsLiterally(QByteArray("v 1 2 3\n") + "# " + QByteArray(1'000'000, 'x') + "\n" + face +
                      "\nv 4 5 6" + QByteArray(1'000'000, ' ') + "# \xC3\xA9\nusemtl " +
                      QByteArray("\xC3\xA9").repeated(300'000));
}

TEST_F(ObjReaderTest, RunsOfAnyLengthReadAsLiterally) {
    NastyText nasty(6);
    for (int i = scaled(10); i > 0; --i)
        expectAsLiterally(nasty.plain(20'000), {4096, kBlockBytes});
}

TEST_F(ObjReaderTest, PlainNumbersInRunsReadAsQStringReadsThem) {
    NastyText nasty(7);
    for (int i = scaled(5); i > 0; --i) {
        QByteArray text = "v 0 0 0\n";
        for (int line = 0; line < 20'000; ++line)
            text += "v " + nasty.decimal() + " " + nasty.decimal() + " " + nasty.decimal() + "\n";
        expectAsLiterally(text);
    }
}

} // namespace Atelier::Vel
