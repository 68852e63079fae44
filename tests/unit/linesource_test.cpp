#include "import/text/linesource.h"

#include <random>

#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtCore/QRegExp>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextCodec>

#include <unistd.h>

#include <gmock/gmock.h>

#include "nastytext.h"
#include "support/scale.h"
#include "textlines.h"

namespace Atelier::Vel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::linesOf;
using Testing::NastyText;
using Testing::scaled;
using Testing::withoutEmptyEnd;

class LineSourceTest : public testing::Test {
protected:
    void write(const QByteArray& bytes) {
        // Closing a file that was truncated to zero may flush it to the disk; a new file is faster.
        _file.remove();
        ASSERT_TRUE(_file.open(QIODevice::WriteOnly));
        _file.write(bytes);
        _file.close();
    }
    QString path() const { return _file.fileName(); }
    QFile& reopened(QIODevice::OpenMode mode = QIODevice::ReadOnly | QIODevice::Text) {
        _file.close();
        EXPECT_TRUE(_file.open(mode));
        return _file;
    }
    QStringList lines(const LineSourceOptions& limits = {}) {
        QTextStream stream(&reopened());
        LineSource source(&stream, limits);
        return linesOf(source);
    }
    QStringList streamLines() {
        QTextStream stream(&reopened());
        return linesOf(stream);
    }

private:
    QTemporaryDir _directory;
    QFile _file{_directory.filePath(QStringLiteral("text"))};
};

LineSourceOptions limitsOf(qint64 blockBytes, qint64 lineBytes = 1 << 20) {
    LineSourceOptions limits;
    limits.blockBytes = blockBytes;
    limits.lineBytes = lineBytes;
    return limits;
}

bool isContinued(const QString& line) {
    return line.endsWith(QLatin1Char('\\')) && !line.contains(QRegExp(QStringLiteral("(^|[ \t-\r])#")));
}

/// Lines with each continued one and those after it as one line.
QStringList joined(const QStringList& lines) {
    QStringList result;
    bool continues = false;
    for (const QString& line : lines) {
        const QString part = isContinued(line) ? line.left(line.size() - 1) + QLatin1Char(' ') : line;
        if (continues)
            result.last() += part;
        else
            result.append(part);
        continues = isContinued(line);
    }
    return result;
}

} // namespace

TEST_F(LineSourceTest, ContinuedLinesAreJoined) {
    LineSourceOptions options;
    options.joinsContinuedLines = true;
    write("f 1 \\\n2\\\r\n3\n# a\\\nb # c\\\nd#e\\\nf\n\\\n\\\ng\\h\n\xC3\xA9\\\n\xC3\xA9\nlast\\");
    const QStringList expected = {
        "f 1  2 3", "# a\\", "b # c\\", "d#e f", "  g\\h", QString::fromUtf8("\xC3\xA9 \xC3\xA9"), "last "};
    EXPECT_EQ(lines(options), expected);
    EXPECT_EQ(lines(), streamLines()) << "only on request";
}

// The same lines as joining those of the stream, whatever is in memory at a time.
TEST_F(LineSourceTest, JoinedLinesAreThoseOfTheStreamJoined) {
    std::mt19937 random(5);
    const std::vector<QByteArray> parts = {"a",    " ",      "\\", "\n",       "\r", "#",
                                           "\\\n", "\\\r\n", " #", "\xC3\xA9", "b c"};
    for (int i = 0; i < scaled(400); ++i) {
        QByteArray text;
        for (auto length = random() % 60; length != 0; --length)
            text += parts[random() % parts.size()];
        write(text);
        LineSourceOptions options = limitsOf(4 + static_cast<qint64>(random() % 40), 1 << 20);
        options.joinsContinuedLines = true;
        ASSERT_EQ(withoutEmptyEnd(lines(options)), withoutEmptyEnd(joined(streamLines())))
            << text.toPercentEncoding().toStdString();
        QString decoded = streamLines().join(QLatin1Char('\n'));
        QTextStream stream(&decoded);
        LineSource source(&stream, options);
        ASSERT_EQ(withoutEmptyEnd(linesOf(source)), withoutEmptyEnd(joined(streamLines())))
            << "not from a file";
    }
}

TEST_F(LineSourceTest, LineEndsAreLineFeedsOnly) {
    write(QByteArray("a\nb\r\nc\rd\n\ne\0f\xE2\x80\xA8g\xC2\x85h\n\r\ni", 24));
    EXPECT_EQ(lines(), streamLines());
    EXPECT_EQ(lines().at(2), "cd");
}

TEST_F(LineSourceTest, BytesOfADecodedLineStandForItsCharacters) {
    write("a\xC2\xA0\xC3\xA9\xF0\x9F\x98\x80 z\n");
    QTextStream stream(&reopened());
    LineSource source(&stream);
    ASSERT_TRUE(source.next());
    EXPECT_EQ(std::string(source.begin(), source.end()), "a \x80\x80\x80 z");
    EXPECT_EQ(source.text(source.begin() + 2, source.begin() + 5),
              QString::fromUtf8("\xC3\xA9\xF0\x9F\x98\x80"));
    EXPECT_FALSE(source.next());
}

TEST_F(LineSourceTest, WhiteSpaceMatchesItsRegularExpression) {
    const QRegExp whiteSpace(QStringLiteral("\\s"));
    QString text;
    for (int code = 1; code < 0x10000; ++code)
        if (code != '\n' && code != '\r')
            text += QChar(code);
    QTextStream stream(&text);
    LineSource source(&stream);
    ASSERT_TRUE(source.next());
    ASSERT_EQ(source.end() - source.begin(), text.size());
    for (int i = 0; i < text.size(); ++i) {
        const char byte = source.begin()[i];
        const bool isSpace = byte == ' ' || (byte >= '\t' && byte <= '\r');
        ASSERT_EQ(isSpace, whiteSpace.exactMatch(QString(text[i]))) << text[i].unicode();
    }
}

TEST_F(LineSourceTest, ByteOrderMarkCountsAtTheStartOnly) {
    write("\xEF\xBB\xBF"
          "a\n\xEF\xBB\xBF"
          "b\n");
    EXPECT_EQ(lines(), QStringList({QStringLiteral("a"), QString(QChar(0xFEFF)) + QLatin1Char('b')}));
}

// The stream drops a mark at the start of a block of its own as long as all was ASCII before, so only once.
TEST_F(LineSourceTest, SecondMarkAtTheStartOfABlockOfTheStreamStays) {
    constexpr int kStreamBlockBytes = 16384;
    const QByteArray mark("\xEF\xBB\xBF");
    const QByteArray block = mark + QByteArray(kStreamBlockBytes - mark.size() - 1, 'x') + '\n';
    write(QByteArray(kStreamBlockBytes - 1, 'a') + '\n' + block + block);
    EXPECT_EQ(lines(), streamLines());
}

TEST_F(LineSourceTest, WideEncodingsAreDetectedByTheirMark) {
    for (const char* name : {"UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE"}) {
        QTextCodec::ConverterState state; // which writes the mark
        const QString text = QString::fromUtf8("v 1\r\nr\xC3\xA9"
                                               "d\r\n\xE8\xB5\xA4");
        write(QTextCodec::codecForName(name)->fromUnicode(text.constData(), text.size(), &state));
        EXPECT_EQ(lines(), QStringList({"v 1",
                                        QString::fromUtf8("r\xC3\xA9"
                                                          "d"),
                                        QString::fromUtf8("\xE8\xB5\xA4")}))
            << name;
    }
}

TEST_F(LineSourceTest, UnfinishedSequenceAtTheEndIsDropped) {
    for (const char* end : {"\xE2", "\xE2\x98", "\xF0\x9F\x98", "x\xC3"}) {
        write(QByteArray("a\nb") + end);
        EXPECT_EQ(lines(), streamLines());
    }
    write("\xE2\x98");
    EXPECT_THAT(lines(), ElementsAre(QString()));
}

TEST_F(LineSourceTest, TextIsNeverReadAsAWhole) {
    write(QByteArray("0123456789\n").repeated(1000));
    QTextStream stream(&reopened());
    LineSource source(&stream, limitsOf(100));
    ASSERT_TRUE(source.next());
    EXPECT_EQ(source.bytesRead(), 100);
    for (int i = 0; i < 20; ++i)
        ASSERT_TRUE(source.next());
    EXPECT_EQ(source.bytesRead(), 300);
}

TEST_F(LineSourceTest, LinesBeyondTheLimitAreDropped) {
    const QByteArray longLine(5000, 'x');
    write("a\n" + longLine + "\nb\n" + longLine + longLine + "\n" + QByteArray(1000, 'y') + "\n" + longLine);
    for (const qint64 blockBytes : {4, 100, 4096, 100'000})
        EXPECT_EQ(lines(limitsOf(blockBytes, 1000)), QStringList({"a", "b", QString(1000, QLatin1Char('y'))}))
            << blockBytes;
}

// The block in which the long line ends has to grow for the line after it.
TEST_F(LineSourceTest, TailOfALineBeyondTheLimitIsNoLine) {
    const QByteArray after(95, 'b');
    write(QByteArray(120, 'x') + "\n" + after + "\nc");
    EXPECT_EQ(lines(limitsOf(100, 99)), QStringList({after, "c"}));
}

TEST_F(LineSourceTest, ByteOrderMarkAfterADroppedLineDoesNotCount) {
    write(QByteArray(4096, 'x') + "\xEF\xBB\xBF\nb\n");
    EXPECT_EQ(lines(limitsOf(4096, 1000)), QStringList({"b"}));
}

TEST_F(LineSourceTest, LinesBeyondTheLimitAreDroppedFromStreamsToo) {
    QString text = QStringLiteral("a\n") + QString(5000, QLatin1Char('x')) + QStringLiteral("\nb\n") +
                   QString(1500, QLatin1Char('x'));
    QTextStream stream(&text);
    LineSource source(&stream, limitsOf(100, 1000));
    EXPECT_EQ(linesOf(source), QStringList({"a", "b"}));
}

// A line of a file may reach the limit; a line of a stream has to be shorter.
TEST_F(LineSourceTest, LimitOfLinesIsExact) {
    constexpr int kLimit = 100;
    QStringList ofFile;
    QStringList ofStream;
    QByteArray text;
    for (const int length : {99, 100, 101, 102, 199, 200, 201, 299, 300, 301, 1000, 100, 99}) {
        const QByteArray line = QByteArray::number(length).leftJustified(length, 'x');
        text += line + '\n';
        ofFile << (length <= kLimit ? QStringList(line) : QStringList());
        ofStream << (length < kLimit ? QStringList(line) : QStringList());
    }
    write(text + "end");
    ofFile << QStringLiteral("end");
    ofStream << QStringLiteral("end");
    for (const qint64 blockBytes : {4, 99, 100, 101, 102, 1000, 100'000})
        EXPECT_EQ(lines(limitsOf(blockBytes, kLimit)), ofFile) << blockBytes;
    QString inMemory = QString::fromLatin1(text + "end");
    QTextStream stream(&inMemory);
    LineSource source(&stream, limitsOf(100, kLimit));
    EXPECT_EQ(linesOf(source), ofStream);
}

TEST_F(LineSourceTest, LastLineBeyondTheLimitIsDroppedWithoutALineFeed) {
    for (const int length : {99, 100, 101, 102, 205}) {
        const QByteArray line(length, 'x');
        write("a\n" + line);
        for (const qint64 blockBytes : {4, 100, 101, 103, 1000})
            EXPECT_EQ(lines(limitsOf(blockBytes, 100)),
                      length <= 100 ? QStringList({"a", line}) : QStringList({"a"}))
                << blockBytes << ' ' << length;
    }
}

// Whatever is in memory at a time, and wherever the line exceeds the limit.
TEST_F(LineSourceTest, JoinedLinesThatAreTooLongAreDropped) {
    const QByteArray part(70, 'x');
    const std::vector<QByteArray> tooLong = {part + "\\\n" + part + "\\\n" + part,
                                             part + part + "\\\r\n" + "tail",
                                             part + "\\\n" + part + part + part + "\\\n\\\n#tail",
                                             part + "\\\n" + part + "x#\\\ntail",
                                             part + "\\\n" + part + " #\\",
                                             part + "\\\n" + part + "\\x"};
    for (const QByteArray& line : tooLong) {
        const QByteArray text = "a\n" + line + "\nb\\\nc\n" + line + "\nlast";
        write(text);
        for (qint64 blockBytes = 4; blockBytes < 300; blockBytes += 1 + blockBytes / 20) {
            LineSourceOptions options = limitsOf(blockBytes, 100);
            options.joinsContinuedLines = true;
            EXPECT_EQ(lines(options), QStringList({"a", "b c", "last"}))
                << blockBytes << ' ' << line.toStdString();
        }
        QString decoded = QString::fromLatin1(text);
        QTextStream stream(&decoded);
        LineSourceOptions options = limitsOf(100, 100);
        options.joinsContinuedLines = true;
        LineSource source(&stream, options);
        EXPECT_EQ(linesOf(source), QStringList({"a", "b c", "last"})) << line.toStdString();
    }
}

TEST_F(LineSourceTest, LastJoinedLineThatIsTooLongIsDropped) {
    const QByteArray part(70, 'x');
    for (const QByteArray& end : {QByteArray("tail"), QByteArray("tail\\"), QByteArray("\\\n")}) {
        const QByteArray text = "a\n" + part + "\\\n" + part + "\\\n" + end;
        write(text);
        LineSourceOptions options = limitsOf(10, 100);
        options.joinsContinuedLines = true;
        EXPECT_EQ(lines(options), QStringList({"a"})) << end.toStdString();
        QString decoded = QString::fromLatin1(text);
        QTextStream stream(&decoded);
        LineSource source(&stream, options);
        EXPECT_EQ(linesOf(source), QStringList({"a"})) << end.toStdString();
    }
}

TEST_F(LineSourceTest, SkippedLinesAreNotReturned) {
    write("a\nb\nc\nd");
    QTextStream stream(&reopened());
    LineSource source(&stream);
    ASSERT_TRUE(source.fill());
    EXPECT_EQ(std::string(source.wholeLinesBegin(), source.wholeLinesEnd()), "a\nb\nc\n");
    source.skipTo(source.wholeLinesBegin() + 4);
    EXPECT_EQ(linesOf(source), QStringList({"c", "d"}));
    EXPECT_FALSE(source.fill());
}

TEST_F(LineSourceTest, StreamsThatCannotBeBypassedAreRead) {
    write("a\r\nb\xE9\n");
    {
        QTextStream binary(&reopened(QIODevice::ReadOnly));
        LineSource source(&binary);
        EXPECT_FALSE(source.fill());
        EXPECT_EQ(linesOf(source).at(0), "a");
    }
    {
        QTextStream latin(&reopened());
        latin.setCodec("ISO-8859-1");
        LineSource source(&latin);
        EXPECT_EQ(linesOf(source).at(1), QString::fromLatin1("b\xE9"));
    }
}

TEST_F(LineSourceTest, BufferIsReadInBlocksAsAFileIs) {
    QBuffer buffer;
    buffer.setData("x\r\ny");
    ASSERT_TRUE(buffer.open(QIODevice::ReadOnly | QIODevice::Text));
    QTextStream stream(&buffer);
    LineSource source(&stream);
    EXPECT_TRUE(source.fill());
    EXPECT_EQ(source.bytesRead(), 4);
    EXPECT_EQ(linesOf(source), QStringList({"x", "y"}));
}

TEST_F(LineSourceTest, StreamsThatDetectNoUnicodeKeepMarksAsTheyDo) {
    for (const QByteArray& text : {QByteArray("\xEF\xBB\xBF"
                                              "a\nb"),
                                   QByteArray("\xFF\xFE"
                                              "a\0\n\0",
                                              6)}) {
        write(text);
        QTextStream stream(&reopened());
        stream.setAutoDetectUnicode(false);
        LineSource source(&stream);
        EXPECT_FALSE(source.fill());
        const QStringList found = linesOf(source);
        QTextStream again(&reopened());
        again.setAutoDetectUnicode(false);
        EXPECT_EQ(found, linesOf(again));
    }
}

TEST_F(LineSourceTest, CodecOfTheLocaleIsRespected) {
    write("r\xE9"
          "d\n");
    QTextCodec* const before = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    const QStringList latin = lines();
    QTextCodec::setCodecForLocale(before);
    EXPECT_EQ(latin, QStringList(QString::fromLatin1("r\xE9"
                                                     "d")));
}

// A stream finds a pipe at its end before anything was read from it.
TEST_F(LineSourceTest, PipesHaveTheLinesOfTheStream) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(::write(ends[1], "a\nb", 3), 3);
    close(ends[1]);
    QFile pipe;
    ASSERT_TRUE(pipe.open(ends[0], QIODevice::ReadOnly | QIODevice::Text, QFileDevice::AutoCloseHandle));
    QTextStream stream(&pipe);
    EXPECT_TRUE(stream.atEnd());
    LineSource source(&stream);
    EXPECT_FALSE(source.fill());
    EXPECT_THAT(linesOf(source), IsEmpty());
    EXPECT_EQ(source.bytesRead(), 0);
}

TEST_F(LineSourceTest, WideEncodingsHaveNoLinesInMemoryAndNoBytesRead) {
    write(QByteArray("\xFF\xFE"
                     "a\0\n\0b\0\n\0",
                     10));
    QTextStream stream(&reopened());
    LineSource source(&stream);
    EXPECT_FALSE(source.fill());
    EXPECT_EQ(source.bytesRead(), 0);
    EXPECT_EQ(linesOf(source), QStringList({"a", "b"}));
    EXPECT_EQ(source.bytesRead(), 0);
}

TEST_F(LineSourceTest, FileIsLeftInTextMode) {
    write("a\nb");
    QFile& file = reopened();
    QTextStream stream(&file);
    LineSource source(&stream);
    EXPECT_TRUE(file.isTextModeEnabled());
    EXPECT_EQ(linesOf(source), QStringList({"a", "b"}));
    EXPECT_TRUE(file.isTextModeEnabled());
    EXPECT_EQ(source.bytesRead(), 3);
}

TEST_F(LineSourceTest, FileThatGrowsIsReadToItsNewEnd) {
    for (const qint64 blockBytes : {4, 5, 100}) {
        write("first\nsecond");
        QTextStream stream(&reopened());
        LineSource source(&stream, limitsOf(blockBytes));
        QFile more(path());
        ASSERT_TRUE(more.open(QIODevice::WriteOnly | QIODevice::Append));
        more.write(" line\nthird\n");
        more.close();
        EXPECT_EQ(linesOf(source), QStringList({"first", "second line", "third"})) << blockBytes;
    }
}

TEST_F(LineSourceTest, NoiseHasTheStreamsLines) {
    NastyText nasty(21);
    for (int i = scaled(2000); i > 0; --i) {
        write(nasty.below(2) == 0 ? nasty.noise(300) : nasty.encoded(nasty.mtl(10)));
        const QStringList expected = withoutEmptyEnd(streamLines());
        for (const qint64 blockBytes : {4, 50, 4096})
            ASSERT_EQ(withoutEmptyEnd(lines(limitsOf(blockBytes))), expected);
    }
}

} // namespace Atelier::Vel
