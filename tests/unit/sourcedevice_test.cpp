#include "files/sourcedevice.h"

#include <QtCore/QBuffer>
#include <QtCore/QProcess>

#include <gmock/gmock.h>

#include "import/text/linesource.h"
#include "nastytext.h"
#include "support/clientsource.h"
#include "support/hangguard.h"
#include "support/scale.h"
#include "textlines.h"

namespace Atelier::Vel {

namespace {

using Testing::ClientDevice;
using Testing::DeviceBehaviour;
using Testing::HangGuard;
using Testing::linesOf;
using Testing::NastyText;
using Testing::scaled;
using Testing::withoutEmptyEnd;

DeviceBehaviour sequential(qint64 mostPerRead, bool mustBeWaitedFor) {
    DeviceBehaviour behaviour;
    behaviour.isSequential = true;
    behaviour.mostPerRead = mostPerRead;
    behaviour.mustBeWaitedFor = mustBeWaitedFor;
    return behaviour;
}

QStringList linesOf(QIODevice& device) {
    SourceDevice reader(device);
    QTextStream stream(&reader);
    LineSource source(&stream);
    return linesOf(source);
}

QByteArray everythingOf(QIODevice& device) {
    SourceDevice reader(device);
    reader.setTextModeEnabled(false);
    return reader.readAll();
}

// What a file with these bytes has.
QStringList linesOfBytes(QByteArray bytes) {
    QBuffer buffer(&bytes);
    EXPECT_TRUE(buffer.open(QIODevice::ReadOnly | QIODevice::Text));
    QTextStream stream(&buffer);
    return withoutEmptyEnd(linesOf(stream));
}

} // namespace

TEST(SourceDeviceTest, SequentialDeviceIsReadToItsTrueEnd) {
    const QByteArray bytes = QByteArray("0123456789").repeated(10'000);
    for (const qint64 most : {1, 7, 100'000'000})
        for (const bool waits : {false, true}) {
            ClientDevice device(bytes, sequential(most, waits));
            EXPECT_EQ(everythingOf(device), bytes) << most << waits;
        }
}

TEST(SourceDeviceTest, OutputOfAProcessIsReadToItsEnd) {
    const HangGuard guard(60);
    QProcess process;
    process.start("/bin/sh", {"-c", "printf 'a\\r\\n'; sleep 0.2; printf 'b\\nc'; sleep 0.2; printf d"});
    EXPECT_EQ(linesOf(process), QStringList({"a", "b", "cd"}));
}

TEST(SourceDeviceTest, DeviceThatAnnouncesDataForEverEnds) {
    class Liar : public ClientDevice {
    public:
        using ClientDevice::ClientDevice;
        bool waitForReadyRead(int) override { return true; }
    };
    const HangGuard guard(60);
    Liar device("a\nb", sequential(2, false));
    EXPECT_EQ(linesOf(device), QStringList({"a", "b"}));
}

TEST(SourceDeviceTest, SequentialDeviceGivesTheLinesOfAFile) {
    QList<QByteArray> texts = {"",
                               "\n",
                               "a",
                               "a\r\nb\rc\n",
                               "\xEF\xBB\xBF"
                               "a\nb",
                               "\xE2\x98",
                               "a\n\xF0\x9F"};
    for (int seed = 0; seed < scaled(60); ++seed) {
        NastyText nasty(static_cast<unsigned int>(seed));
        texts += nasty.encoded(nasty.obj(50));
        texts += nasty.damaged(nasty.foreign(9000)); // longer than a block of the stream
    }
    for (const QByteArray& text : texts)
        for (const qint64 most : {3, 5000, 100'000'000}) {
            ClientDevice device(text, sequential(most, most == 5000));
            ASSERT_EQ(withoutEmptyEnd(linesOf(device)), linesOfBytes(text))
                << text.left(100).toHex().toStdString();
        }
}

TEST(SourceDeviceTest, DeviceThatCanSeekGivesTheLinesOfAFileInLargeBlocks) {
    for (int seed = 0; seed < scaled(60); ++seed) {
        NastyText nasty(static_cast<unsigned int>(seed));
        for (const QByteArray& text : {nasty.encoded(nasty.obj(50)), nasty.damaged(nasty.foreign(9000))})
            for (const qint64 most : {3, 5000, 100'000'000}) {
                DeviceBehaviour behaviour;
                behaviour.mostPerRead = most;
                ClientDevice device(text, behaviour);
                ASSERT_EQ(withoutEmptyEnd(linesOf(device)), linesOfBytes(text))
                    << text.left(100).toHex().toStdString();
            }
    }
    ClientDevice device("a\nb\n", {});
    SourceDevice reader(device);
    QTextStream stream(&reader);
    LineSource source(&stream);
    EXPECT_TRUE(source.fill());
    EXPECT_EQ(source.bytesRead(), 4);
}

// The end of the device is reached before its encoding is known.
TEST(SourceDeviceTest, WideTextOfOneLineIsRead) {
    for (const bool isSequential : {false, true}) {
        DeviceBehaviour behaviour;
        behaviour.isSequential = isSequential;
        ClientDevice device(QByteArray("\xFF\xFE"
                                       "a\0",
                                       4),
                            behaviour);
        EXPECT_EQ(linesOf(device), QStringList("a"));
    }
}

TEST(SourceDeviceTest, WrongSizesDoNotMatter) {
    const QByteArray text = QByteArray("line\n").repeated(100'000);
    for (const qint64 claimed :
         {qint64(-1), qint64(0), qint64(7), qint64(text.size()) + 1, qint64(1) << 60}) {
        DeviceBehaviour behaviour;
        behaviour.claimedBytes = claimed;
        ClientDevice device(text, behaviour);
        EXPECT_EQ(linesOf(device).size(), 100'000) << claimed;
    }
}

TEST(SourceDeviceTest, ErrorBeforeTheSizeIsAFailure) {
    const QByteArray text = QByteArray("line\n").repeated(100'000);
    for (const bool isSequential : {false, true})
        for (const qint64 failsAt : {qint64(0), qint64(3), qint64(300'000), qint64(text.size())}) {
            DeviceBehaviour behaviour = sequential(1000, false);
            behaviour.isSequential = isSequential;
            behaviour.failsAt = failsAt;
            ClientDevice device(text, behaviour);
            SourceDevice reader(device);
            QTextStream stream(&reader);
            LineSource source(&stream);
            EXPECT_EQ(linesOf(source).size(), (failsAt + 4) / 5);
            EXPECT_EQ(reader.hasFailed(), !isSequential && failsAt < text.size()) << failsAt;
        }
}

TEST(SourceDeviceTest, TextModeOfTheDeviceDoesNotMatter) {
    for (const bool isSequential : {false, true}) {
        DeviceBehaviour behaviour = sequential(100, false);
        behaviour.isSequential = isSequential;
        behaviour.mode |= QIODevice::Text;
        const QByteArray wide("\xFF\xFE"
                              "a\0\r\0\n\0\x0D\x0A\n\0",
                              12); // U+0A0D is no end of a line
        ClientDevice device(wide, behaviour);
        EXPECT_EQ(linesOf(device), QStringList({"a", QString(QChar(0x0A0D))}));
    }
}

} // namespace Atelier::Vel
