#include <velmodel/objloader.h>

#include <cerrno>
#include <memory>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>

#include "faultyfile.h"
#include "summedload.h"
#include "support/messagelog.h"

namespace Atelier::Vel {

namespace {

using Testing::FileFault;
using Testing::MessageLog;
using Testing::SummedLoad;
using Testing::summedLoad;

// More than the library reads at a time.
constexpr int kManyLines = 40'000;

class FileFaultsTest : public testing::Test {
protected:
    QString path(const char* name) const { return _folder.filePath(QString::fromLatin1(name)); }
    QString write(const char* name, const QByteArray& content) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return path(name);
    }

    /// A model of some megabytes; every part of it is drawn.
    static QByteArray longText() {
        QByteArray text;
        for (int i = 0; i < kManyLines; ++i)
            text += "v " + QByteArray::number(i) + " 0 1\nv 0 " + QByteArray::number(i) + " 1\nv 0 0 " +
                    QByteArray::number(i) + "\nf -1 -2 -3\n";
        return text;
    }

    /// The result of loading the first `bytes` bytes of the long model.
    SummedLoad loadBeginning(qint64 bytes) const {
        return summedLoad(write("beginning.obj", longText().left(static_cast<int>(bytes))));
    }

private:
    QTemporaryDir _folder;
    MessageLog _log; // the samples contain lines that are logged
};

QString failure(const char* kind, const QString& path) {
    return QStringLiteral("Failed to load %1 file '%2'").arg(QString::fromLatin1(kind), path);
}

} // namespace

TEST_F(FileFaultsTest, ShortReadsChangeNothing) {
    for (const char* name : {"gear", "mosaic", "oddities", "stairs", "vase"}) {
        const QString file =
            QStringLiteral(VELMODEL_SOURCE_DIR "/samples/%1/%1.obj").arg(QString::fromLatin1(name));
        const SummedLoad expected = summedLoad(file);
        ASSERT_TRUE(expected.isLoaded);
        for (const long most : {1, 2, 3, 7, 100, 4096}) {
            const FileFault fault(file, [most](long, std::size_t) { return most; });
            EXPECT_TRUE(summedLoad(file) == expected) << name << " by " << most;
            EXPECT_GT(FileFault::reads(), 1u);
        }
    }
}

TEST_F(FileFaultsTest, InterruptedReadsAreRepeated) {
    const QString file = write("long.obj", longText());
    const SummedLoad expected = summedLoad(file);
    const FileFault fault(file,
                          [](long, std::size_t) { return FileFault::reads() % 2 == 1 ? -EINTR : 5000; });
    EXPECT_TRUE(summedLoad(file) == expected);
    EXPECT_GT(FileFault::reads(), 100u);
}

TEST_F(FileFaultsTest, ReadErrorAnywhereInAModelFailsTheLoad) {
    const QByteArray text = longText();
    for (const QByteArray& content :
         {text, "\xEF\xBB\xBF" + text, "\xFF\xFE" + text, text + "# \xC3\xA9\n"}) {
        const QString file = write("long.obj", content);
        for (const long good : {0, 1, 3, 1000, 300'000, content.size() - 1}) {
            const FileFault fault(file, [good](long offset, std::size_t) -> long {
                return offset < good ? good - offset : -EIO;
            });
            const SummedLoad load = summedLoad(file);
            EXPECT_FALSE(load.isLoaded) << good;
            EXPECT_EQ(load.error, failure("OBJ", file)) << good;
            EXPECT_TRUE(load.streams.isEmpty());
        }
    }
}

TEST_F(FileFaultsTest, ReadErrorInALibraryFailsTheLoad) {
    const QString library = write("a.mtl", "newmtl red\nKd 1 0 0\n");
    const QString file = write("a.obj", "mtllib a.mtl\nv 0 0 0\nusemtl red\nf 1 1 1\n");
    for (const long good : {0, 1, 12}) {
        const FileFault fault(library, [good](long offset, std::size_t) -> long {
            return offset < good ? good - offset : -EIO;
        });
        EXPECT_EQ(summedLoad(file).error, failure("MTL", library)) << good;
    }
}

TEST_F(FileFaultsTest, LibraryNamedManyTimesIsReadOnce) {
    const QString library = write("a.mtl", "newmtl red\nKd 1 0 0\n");
    const QString once = write("once.obj", "mtllib a.mtl\nv 0 0 0\nusemtl red\nf 1 1 1\n");
    const QString often = write("often.obj", QByteArray("mtllib a.mtl\nmtllib ./a.mtl\n").repeated(25'000) +
                                                 "v 0 0 0\nusemtl red\nf 1 1 1\n");
    const FileFault fault(library, [](long, std::size_t bytes) { return static_cast<long>(bytes); });
    const SummedLoad expected = summedLoad(once);
    const std::size_t reads = FileFault::reads();
    EXPECT_TRUE(summedLoad(often) == expected);
    EXPECT_EQ(FileFault::reads(), 2 * reads);
}

TEST_F(FileFaultsTest, LibraryThatChangesIsReadAgain) {
    write("a.mtl", "newmtl red\n");
    const QString file = write("a.obj", "v 0 0 0\nmtllib a.mtl\nusemtl red\nf 1 1 1\n" +
                                            QByteArray("# comment\n").repeated(kManyLines) +
                                            "mtllib a.mtl\nusemtl tan\nf 1 1 1\n");
    EXPECT_EQ(summedLoad(file).commands, 1);
    const FileFault fault(file, [&](long offset, std::size_t bytes) {
        if (offset > 0)
            write("a.mtl", "newmtl tan\n");
        return static_cast<long>(bytes);
    });
    EXPECT_EQ(summedLoad(file).commands, 2);
}

// The reads determine the end of the file, not its size when it was opened.
TEST_F(FileFaultsTest, FileThatShrinksIsReadToItsNewEnd) {
    for (const qint64 rest : {0, 1, 1000, 300'000, 500'001}) {
        const QString file = write("long.obj", longText());
        qint64 readBefore = 0;
        const FileFault fault(file, [&](long offset, std::size_t bytes) {
            if (FileFault::reads() == 2) {
                readBefore = offset;
                EXPECT_TRUE(QFile::resize(file, rest));
            }
            return static_cast<long>(bytes);
        });
        const SummedLoad load = summedLoad(file);
        ASSERT_GT(readBefore, 0);
        EXPECT_TRUE(load == loadBeginning(std::max(readBefore, rest))) << rest;
    }
}

TEST_F(FileFaultsTest, LibraryTruncatedDuringTheReadEndsThere) {
    const QString library = write("a.mtl", "newmtl red\nKd 1 0 0\n");
    const QString file = write("a.obj", "mtllib a.mtl\nv 0 0 0\nusemtl red\nf 1 1 1\n");
    const FileFault fault(library, [&](long, std::size_t bytes) {
        EXPECT_TRUE(QFile::resize(library, 0));
        return static_cast<long>(bytes);
    });
    const SummedLoad load = summedLoad(file);
    EXPECT_TRUE(load.isLoaded);
    EXPECT_EQ(load.commands, 0);
}

} // namespace Atelier::Vel
