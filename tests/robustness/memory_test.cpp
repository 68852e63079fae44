#include <sys/resource.h>

#include <QtCore/QFileInfo>

#include <gmock/gmock.h>

#include "childload.h"
#include "largefiles.h"
#include "support/messagelog.h"
#include "support/sanitizer.h"
#include "support/scale.h"

namespace Atelier::Vel {

namespace {

using Testing::ChildLoad;
using Testing::LargeFiles;
using Testing::loadInChild;
using Testing::scaled;

const QByteArray kTriangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";

QByteArray coordinates(int i) {
    return QByteArray::number(0.001 * i, 'f', 6) + ' ' + QByteArray::number(1000 - 0.002 * i, 'f', 6) + ' ' +
           QByteArray::number(0.5 * (i % 1000), 'f', 6) + '\n';
}

constexpr bool kIsSanitized = VELMODEL_ADDRESS_SANITIZER == 1;

/// The maximum memory of a load: six times the size of all its files, plus 64 MB.
void expectModestPeak(const ChildLoad& load, qint64 textBytes) {
    ASSERT_TRUE(load.hasEnded);
    ASSERT_TRUE(load.isLoaded) << load.error.toStdString();
    // A sanitizer's own memory does not count.
    if (!kIsSanitized) {
        EXPECT_LE(load.peakBytes, 6 * static_cast<quint64>(textBytes) + (quint64{64} << 20));
    }
}

void expectModestPeak(const QString& path) {
    expectModestPeak(loadInChild(path), QFileInfo(path).size());
}

/// Peaks of memory and of the stack for loads of tens of megabytes of text; ten times the text and more with
/// VELMODEL_TEST_SCALE.
class MemoryTest : public testing::Test {
protected:
    LargeFiles _files;
};

} // namespace

TEST_F(MemoryTest, Triangles) {
    const auto line = [](int i) {
        const QByteArray corner = QByteArray::number(-1 - i % 50);
        return "v " + coordinates(i) + "f -1 " + corner + " -3\nf " + corner + " -2 -1\n";
    };
    expectModestPeak(_files.write("a.obj", kTriangle.repeated(20), scaled(300'000), line));
}

TEST_F(MemoryTest, TrianglesWithEverything) {
    const auto line = [](int i) {
        const QByteArray number = QByteArray::number(i + 1);
        return "v " + coordinates(i) + "vt 0.25 0." + number + "\nvn " + coordinates(i) + "f " + number +
               '/' + number + '/' + number + " 1/1/1 2/2/2\n";
    };
    expectModestPeak(_files.write("a.obj", {}, scaled(200'000), line));
}

TEST_F(MemoryTest, TrianglesOfTheShortestText) {
    expectModestPeak(_files.repeat("a.obj", kTriangle, "f 1 1 1\n", scaled(3'000'000)));
    expectModestPeak(
        _files.repeat("b.obj", kTriangle + "vt 0 0\nvn 0 0 1\n", "f 1 2 3\n", scaled(3'000'000)));
}

// Streams reserve more addresses than they use, and also work with fewer.
TEST_F(MemoryTest, FewAddressesAreEnough) {
    if (kIsSanitized)
        GTEST_SKIP() << "a sanitizer needs the addresses for itself";
    const QString model = _files.repeat("a.obj", kTriangle, "f 1 2 3\n", 3'000'000);
    const ChildLoad load = loadInChild(model, [] {
        constexpr rlimit kLimit = {quint64{1} << 30, quint64{1} << 30};
        setrlimit(RLIMIT_AS, &kLimit);
    });
    expectModestPeak(load, QFileInfo(model).size());
    EXPECT_EQ(load.report.statistics.triangles, 3'000'000u);
}

TEST_F(MemoryTest, LoadWithoutAddressesReportsTheError) {
    if (kIsSanitized)
        GTEST_SKIP() << "a sanitizer needs the addresses for itself";
    const ChildLoad load = loadInChild(_files.repeat("a.obj", kTriangle, "f 1 2 3 1\n", 5'000'000), [] {
        constexpr rlimit kLimit = {quint64{200} << 20, quint64{200} << 20};
        setrlimit(RLIMIT_AS, &kLimit);
    });
    EXPECT_TRUE(load.hasEnded);
    EXPECT_TRUE(load.isBadAlloc);
}

// Enough for all recursion and all arrays on the stack, for any text.
TEST_F(MemoryTest, HalfAMegabyteOfStackIsEnough) {
    if (kIsSanitized)
        GTEST_SKIP() << "a sanitizer enlarges stack frames";
    const auto little = [] {
        constexpr rlimit kLimit = {quint64{512} << 10, quint64{512} << 10};
        setrlimit(RLIMIT_STACK, &kLimit);
    };
    const int count = scaled(20'000);
    const auto corner = [count](int i) {
        return i < count ? "v " + coordinates(i)
                         : (i == count ? "f " : "") + QByteArray::number(i - count + 1) + ' ';
    };
    const auto sample = [](const char* name) {
        return QStringLiteral(VELMODEL_SOURCE_DIR "/samples/%1/%1.obj").arg(QLatin1String(name));
    };
    for (const QString& path :
         {sample("showpiece"), sample("mosaic"), _files.write("polygon.obj", {}, 2 * count, corner),
          _files.repeat("line.obj", kTriangle + "# ", "\xC3\xA9 ", scaled(1'000'000), "\nf 1 2 3\n"),
          _files.repeat("groups.obj", kTriangle, "f 1 2 3\nusemtl a\n", scaled(50'000)),
          _files.repeat("numbers.obj", "v ", "9", scaled(1'000'000), "\nv 1 2 3\nf 1 2 2\n")})
        EXPECT_TRUE(loadInChild(path, little).isLoaded) << path.toStdString();
}

TEST_F(MemoryTest, VerticesOfTheShortestText) {
    expectModestPeak(_files.repeat("a.obj", {}, "v\n", scaled(8'000'000), "f 1 2 3\n"));
    expectModestPeak(_files.repeat("b.obj", {}, "v\nvt\nvn\n", scaled(3'000'000), "f 1 2 3\n"));
    expectModestPeak(_files.repeat("c.obj", {}, "v\nv\nv\nf -1 -2 -3\n", scaled(1'500'000)));
}

TEST_F(MemoryTest, FacesWithoutTriangles) {
    expectModestPeak(_files.repeat("a.obj", kTriangle, "f\n", scaled(8'000'000)));
}

TEST_F(MemoryTest, LinesWithoutMeaning) {
    expectModestPeak(_files.repeat("a.obj", kTriangle, "# a comment\n", scaled(2'000'000)));
    expectModestPeak(_files.repeat("b.obj", kTriangle, "\n", scaled(20'000'000)));
    expectModestPeak(_files.repeat("c.obj", kTriangle, "usemtl a\nusemtl b\n", scaled(1'000'000)));
}

TEST_F(MemoryTest, LongLines) {
    for (const QByteArray& text :
         {QByteArray("# comment "), QByteArray("\xC3\xA9"), QByteArray("\r"), QByteArray(1, '\0')})
        expectModestPeak(
            _files.repeat("a.obj", kTriangle + '#', text, scaled(20'000'000) / text.size(), "\nf 1 2 3\n"));
}

TEST_F(MemoryTest, LongLinesOfALibrary) {
    const QString model = _files.repeat("a.obj", "mtllib a.mtl\n", kTriangle, 1);
    for (const char* start : {"# ", "newmtl ", "newmtl a\nmap_Kd ", "newmtl a\nKd 1 0 ", "unknown "}) {
        const QString library = _files.repeat("a.mtl", start, "1", scaled(20'000'000), "\n");
        expectModestPeak(loadInChild(model), QFileInfo(library).size());
    }
}

TEST_F(MemoryTest, OnePolygon) {
    const int count = scaled(60'000);
    const auto corner = [count](int i) {
        return i < count ? "v " + coordinates(i)
                         : (i == count ? "f " : "") + QByteArray::number(i - count + 1) + ' ';
    };
    expectModestPeak(_files.write("a.obj", {}, 2 * count, corner));
}

TEST_F(MemoryTest, GroupsOfOneFace) {
    const int count = scaled(100'000);
    const QString library = _files.write("a.mtl", {}, count, [](int i) {
        return "newmtl m" + QByteArray::number(i) + "\nKd 0.25 0.5 0." + QByteArray::number(i) + '\n';
    });
    const QString model = _files.write("a.obj", "mtllib a.mtl\n", count, [](int i) {
        return "v " + coordinates(i) + "v " + coordinates(i + 1) + "v " + coordinates(2 * i) + "usemtl m" +
               QByteArray::number(i) + "\nf -1 -2 -3\n";
    });
    const ChildLoad load = loadInChild(model);
    EXPECT_EQ(load.commands, count);
    expectModestPeak(load, QFileInfo(model).size() + QFileInfo(library).size());
}

// The shortest text of a group: shows any memory that the library wastes per group.
TEST_F(MemoryTest, GroupsOfOneFaceOfTheShortestText) {
    const int count = scaled(500'000);
    const QString library =
        _files.write("a.mtl", {}, count, [](int i) { return "newmtl m" + QByteArray::number(i) + '\n'; });
    const QString model = _files.write("a.obj", "mtllib a.mtl\n" + kTriangle, count, [](int i) {
        return "usemtl m" + QByteArray::number(i) + "\nf 1 2 3\n";
    });
    const ChildLoad load = loadInChild(model);
    EXPECT_EQ(load.commands, count);
    expectModestPeak(load, QFileInfo(model).size() + QFileInfo(library).size());
}

} // namespace Atelier::Vel
