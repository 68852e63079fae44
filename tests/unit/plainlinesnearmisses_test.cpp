// Lines that are plain except for one byte: compares every parser with the literal reader.

#include <memory>
#include <vector>

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayList>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextStream>

#include <gmock/gmock.h>

#include "lineparsers.h"
#include "literal/literalobjreader.h"
#include "objrecords.h"
#include "support/scale.h"

namespace Atelier::Vel {

namespace {

using Testing::allParsers;
using Testing::Colours;
using Testing::Content;
using Testing::contentInRuns;
using Testing::contentOf;
using Testing::LineParserTest;
using Testing::LiteralObjReader;
using Testing::nameOf;
using Testing::nativeParsers;
using Testing::parse;
using Testing::ParsedLines;
using Testing::Record;
using Testing::scaledStep;
using Testing::takeAll;

// Only after such lines are other lines of their kinds plain.
const QByteArray kFirstLines = "v\nvn\nvt\n";
const QByteArray kNextLine = "vt 0.5 0.25\n";

const QByteArrayList kVertexLines = {
    "v 1.5 -2.25 0.125",
    "v 1 2 -3",
    "v  -1.0  2.0  3.0 ",
    "v 1.0 2.0 3.0 1.0",
    "v -0.000000 1234567.12345678 0.123456789012",
    "v 12345.678 0.1 9.0\r",
    "v 1.0 -2.0 3.0 0.5 0.25 -1.0",
    "v 1 2 3 1 0 0.5 \r",
    "v 0.123456 1.5 -2.0 0.501961 0.501961 -0.501961 1.0\r",
    "v -123456.654321 -123456.654321 0.5 0 255 -1 0.25",
    "v 1.0 2.0 3 \r",
    "vn 0.0 -0.5 1.0",
    "vn 0 1 0.25\r",
    "vt 0.5 0.25",
    "vt -1 0",
    "vt 0.5 -0.25 0.0\r",
};

const QByteArrayList kFaceLines = {
    "f",
    "f 1",
    "f 1 2 3\r",
    "f  1  20  300 ",
    "f 1/2 2/3 3/4",
    "f 1//2 2//3 3//4",
    "f 1/2/3 2/3/4 3/4/5",
    "f 1/ 2/ 3/",
    "f -1 -2 -3",
    "f -1/-1/-1 -2//-2 -3/-3",
    "f 1/2/3 2 3//4 4/5",
    "f 0 1/0 0/0/0",
    "f 1234567/7654321/1234567 2/1/2",
    "f 1 2 3 4 5",
    "f 1/2/3 2/3/4 3/4/5 4/5/6 5/6/7 \r",
};

QByteArray everyByte() {
    QByteArray bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    return bytes;
}

/// Bytes with a meaning in such lines, and their neighbours.
QByteArray meaningfulBytes() {
    return QByteArray(" -./019:,vf\r\n\t\0\x80", 16) + '\x0F';
}

/// Calls `use` with the text, and with the text in which one byte is left out, replaced by one of `bytes`, or
/// has one of them before it.
template<typename Use>
void forEachNearMiss(const QByteArray& text, const QByteArray& bytes, Use use) {
    use(text);
    for (int at = 0; at < text.size(); at += scaledStep()) {
        use(QByteArray(text).remove(at, 1));
        for (const char byte : bytes) {
            use(QByteArray(text).replace(at, 1, &byte, 1));
            use(QByteArray(text).insert(at, byte));
        }
    }
}

/// A face whose corners are all alike. Each % becomes a number; the numbers have `digits` digits together,
/// distributed about equally.
QByteArray face(const QByteArray& corner, int corners, int digits) {
    QByteArray line = "f" + (' ' + corner).repeated(corners);
    for (int numbers = line.count('%'); numbers > 0; --numbers) {
        const int length = digits / numbers;
        line.replace(line.indexOf('%'), 1,
                     QByteArray("1234567890").mid(numbers % 9).repeated(2).left(length));
        digits -= length;
    }
    return line;
}

Content readLiterally(const QByteArray& text, Colours colours) {
    QTextStream stream(text, QIODevice::ReadOnly | QIODevice::Text);
    LiteralObjReader reader(&stream);
    return contentOf(takeAll(reader), colours);
}

class NearMissTest : public LineParserTest {
protected:
    NearMissTest() { _coloured.run->takesColours = true; }

    /// Expects that what the parser takes of a text is what the literal reader reads there, and counts it,
    /// with and without colours.
    void expectAsLiterally(const QByteArray& text, char around = '7') {
        static const Content kFirst = readLiterally(kFirstLines, Colours::Ignored);
        expectAsLiterally(text, around, _parsed, kFirst, Colours::Ignored);
        static const Content kFirstColoured = readLiterally(kFirstLines, Colours::Read);
        if (text.startsWith('v') && !HasFatalFailure())
            expectAsLiterally(text, around, _coloured, kFirstColoured, Colours::Read);
    }
    void expectAsLiterally(const QByteArray& text, char around, ParsedLines& parsed, const Content& first,
                           Colours colours) {
        parse(text, _wideParser, around, parsed);
        ASSERT_TRUE(parsed.taken == 0 || text[parsed.taken - 1] == '\n') << text.toStdString();
        Content content = first;
        take(*parsed.run, content);
        const Content expected =
            parsed.taken == 0 ? first : readLiterally(kFirstLines + text.left(parsed.taken), colours);
        ASSERT_EQ(content, expected) << text.toStdString();
        ASSERT_EQ(parsed.counts.positions, content.positions.size() / 3) << text.toStdString();
        ASSERT_EQ(parsed.counts.normals, content.normals.size() / 3) << text.toStdString();
        ASSERT_EQ(parsed.counts.texCoords, content.texCoords.size() / 2) << text.toStdString();
    }
    void expectNearMissesAsLiterally(const QByteArrayList& lines, const QByteArray& bytes,
                                     char around = '7') {
        for (const QByteArray& line : lines)
            forEachNearMiss(line + '\n', bytes, [&](const QByteArray& nearMiss) {
                if (!HasFatalFailure())
                    expectAsLiterally(nearMiss + kNextLine, around);
            });
    }
    /// Expects that a text gives the same result after other lines as by itself. `before` is the content of
    /// `lines`.
    void expectSameBehind(const QByteArray& lines, const Content& before, const QByteArray& text) {
        parse(text, _wideParser, '7', _parsed);
        const int taken = _parsed.taken;
        Content expected = before;
        take(*_parsed.run, expected);
        parse(lines + text, _wideParser, '7', _parsed);
        Content content;
        take(*_parsed.run, content);
        ASSERT_EQ(_parsed.taken, lines.size() + taken) << text.toStdString();
        ASSERT_EQ(content, expected) << lines.size() << " bytes before " << text.toStdString();
    }

private:
    ParsedLines _parsed;
    ParsedLines _coloured;
};

class LinePlaceTest : public NearMissTest {};

} // namespace

TEST_P(NearMissTest, VertexLinesWithAnyByteReadAsLiterally) {
    expectNearMissesAsLiterally(kVertexLines, everyByte());
}

TEST_P(NearMissTest, FaceLinesWithAnyByteReadAsLiterally) {
    expectNearMissesAsLiterally(kFaceLines, everyByte());
}

TEST_P(NearMissTest, FacesOfEveryShapeReadAsLiterally) {
    for (const QByteArray corner :
         {"%", "%/%", "%//%", "%/%/%", "-%", "-%/-%", "-%//-%", "-%/-%/-%", "%/-%/%"})
        for (int corners = 1; corners <= 9; ++corners)
            expectNearMissesAsLiterally({face(corner, corners, corners * corner.count('%'))},
                                        meaningfulBytes());
}

// Numbers of up to eight digits, one too many for all but the literal reader, wherever parts of the text
// begin that parsers take at a time.
TEST_P(NearMissTest, FacesOfEveryLengthReadAsLiterally) {
    for (const QByteArray corner : {"%", "%/%", "%//%", "%/%/%", "-%/-%/-%"})
        for (int corners = 1; corners <= 5; ++corners) {
            const int numbers = corners * corner.count('%');
            for (int digits = numbers; digits <= 8 * numbers; digits += scaledStep())
                expectNearMissesAsLiterally({face(corner, corners, digits)}, "/");
        }
}

TEST_P(NearMissTest, DecimalsOfEveryLengthReadAsLiterally) {
    const auto decimal = [](int digits, int fraction) {
        const QByteArray all = QByteArray("9182736450").repeated(4);
        return all.left(digits) + (fraction < 0 ? "" : '.' + all.mid(digits, fraction));
    };
    for (int digits = 0; digits <= 17; ++digits)
        for (int fraction = -1; fraction <= 17; ++fraction)
            for (const QByteArray other : {"-0.5", "1234567.12345678", "3"}) {
                const QByteArray one = decimal(digits, fraction);
                for (const QByteArray& sign : {QByteArray(), QByteArray("-")})
                    for (const QByteArray& line :
                         {"v " + sign + one + ' ' + other + ' ' + other,
                          "v 1.0 " + sign + one + " 3.0 0.5 0.5 0.5",
                          "v 1.0 2.0 3.0 " + sign + one + ' ' + other + ' ' + sign + one,
                          "v 1.0 2.0 3.0 0.5 " + other + " 0.5 " + sign + one,
                          "vn " + other + ' ' + sign + one + ' ' + other,
                          "v " + other + ' ' + other + ' ' + sign + one, "vt " + sign + one + ' ' + other,
                          "vt " + other + ' ' + sign + one})
                        expectAsLiterally(line + '\n' + kNextLine);
            }
}

TEST_P(NearMissTest, IgnoredOperandsMayHaveAnyLength) {
    for (const QByteArray line : {"v 1.0 -2.0 3.0", "vn 1 2 3", "vt 0.5 -0.25"})
        for (int length = 0; length < 200; ++length)
            for (const QByteArray end : {"\n", "\r\n", " \n", "\r \n", "\r1\n"})
                expectAsLiterally(line + ' ' + QByteArray(length, '7') + end + kNextLine);
}

TEST_P(NearMissTest, BytesAroundTheLinesDoNotMatter) {
    for (const char around : {'-', '.', '/', ' ', '\n', '\r', 'v'})
        expectNearMissesAsLiterally(kVertexLines + kFaceLines, " -./1\r\n", around);
}

TEST_P(LinePlaceTest, LinesReadTheSameAtAnyPlace) {
    for (int shift = 4; shift < 4 + 64; shift += scaledStep()) {
        const QByteArray before =
            "f" + QByteArray(" 1").repeated(shift / 2 - 1) + (shift % 2 == 0 ? "\n" : "2\n");
        ASSERT_EQ(before.size(), shift);
        const Content content = readLiterally(before, Colours::Ignored);
        for (const QByteArray& line : kVertexLines + kFaceLines)
            forEachNearMiss(line + '\n', " /1\r", [&](const QByteArray& nearMiss) {
                if (!HasFatalFailure())
                    expectSameBehind(before, content, nearMiss + kNextLine);
            });
    }
}

// The rest is left to the reader of single records.
TEST_P(NearMissTest, FilesOfNearMissesReadAsLiterally) {
    QByteArray text = kFirstLines;
    for (const QByteArray& line : kVertexLines + kFaceLines)
        forEachNearMiss(line + '\n', meaningfulBytes() + "#e+\x0B\x0C\x1F\xC2\xA0",
                        [&](const QByteArray& nearMiss) { text += nearMiss + kNextLine; });
    const QTemporaryDir directory;
    QFile file(directory.filePath("model.obj"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    file.close();
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    QTextStream literalStream(&file);
    LiteralObjReader literalReader(&literalStream);
    const std::vector<Record> records = takeAll(literalReader);
    for (const Colours colours : {Colours::Ignored, Colours::Read})
        for (const qint64 blockBytes : {1000, 1024, 256 * 1024}) {
            file.seek(0);
            QTextStream stream(&file);
            LineSourceOptions limits;
            limits.blockBytes = blockBytes;
            ObjReader reader(&stream, limits, _wideParser);
            const std::unique_ptr<ObjRun> run(new ObjRun);
            run->takesColours = colours == Colours::Read;
            EXPECT_EQ(contentInRuns(reader, *run), contentOf(records, colours)) << blockBytes;
        }
}

INSTANTIATE_TEST_SUITE_P(Parsers, NearMissTest, testing::ValuesIn(allParsers()), nameOf);
// Without the emulated parser, which is slow and reads each line from its beginning.
INSTANTIATE_TEST_SUITE_P(Parsers, LinePlaceTest, testing::ValuesIn(nativeParsers()), nameOf);

} // namespace Atelier::Vel
