#include <cmath>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <gmock/gmock.h>

#include <velmodel/modelbuilder.h>

#include "childload.h"
#include "largefiles.h"
#include "support/messagelog.h"
#include "support/scale.h"

namespace Atelier::Vel {

namespace {

using Testing::ChildLoad;
using testing::ElementsAre;
using Testing::LargeFiles;
using Testing::loadInChild;
using Testing::MessageLog;
using Testing::scaled;

const QByteArray kTriangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";

/// Only runs with VELMODEL_TEST_SCALE reach the documented sizes.
bool isLongRun() {
    return scaled(1) > 1;
}

int withScale(int always, int promised) {
    return isLongRun() ? promised : always;
}

QString refusal(const char* purpose) {
    return QStringLiteral("Data for %1 refused: a stream holds at most 2147483647 bytes")
        .arg(QLatin1String(purpose));
}

class LimitsTest : public testing::Test {
protected:
    ChildLoad loadRepeated(const QByteArray& head, const QByteArray& line, int count,
                           const QByteArray& tail = {}) const {
        ChildLoad load = loadInChild(_files.repeat("a.obj", head, line, count, tail));
        EXPECT_TRUE(load.hasEnded);
        return load;
    }

    LargeFiles _files;
};

} // namespace

TEST_F(LimitsTest, MillionsOfGroupsOfOneFace) {
    const int count = withScale(100'000, 10'000'000);
    _files.write("a.mtl", {}, count, [](int i) { return "newmtl m" + QByteArray::number(i) + '\n'; });
    const ChildLoad load = loadInChild(_files.write("a.obj", "mtllib a.mtl\n" + kTriangle, count, [](int i) {
        return "usemtl m" + QByteArray::number(i) + "\nf 1 2 3\n";
    }));
    EXPECT_TRUE(load.isLoaded);
    EXPECT_EQ(load.commands, count);
    EXPECT_EQ(load.report.statistics.triangles, static_cast<quint64>(count));
    EXPECT_EQ(load.report.facesWithoutGroup, 0u);
}

TEST_F(LimitsTest, ManyMaterialsWithAllTheirLines) {
    const int count = 100'000;
    _files.write("a.mtl", {}, count, [](int i) {
        return "newmtl m" + QByteArray::number(i) +
               "\nKa 0 0 0\nKd 0.5 0.5 0.5\nKs 1 1 1\nNs 10\nd 1\nmap_Kd t" + QByteArray::number(i) +
               ".png\n";
    });
    const ChildLoad load = loadRepeated("mtllib a.mtl\n" + kTriangle + "usemtl m99999\n", "f 1 2 3\n", 1);
    EXPECT_TRUE(load.isLoaded);
    EXPECT_EQ(load.commands, 1);
}

TEST_F(LimitsTest, MillionsOfFaces) {
    const int count = withScale(1'000'000, 20'000'000);
    const ChildLoad load = loadRepeated(kTriangle, "f 1 2 3\n", count);
    EXPECT_TRUE(load.isLoaded);
    EXPECT_EQ(load.report.statistics.triangles, static_cast<quint64>(count));
    EXPECT_EQ(load.indexCount, 3 * count);
}

TEST_F(LimitsTest, LinesOfManyMegabytes) {
    const int bytes = withScale(10'000'000, 200'000'000);
    const QByteArray face = "\nf 1 2 3\n";
    EXPECT_EQ(loadRepeated(kTriangle + "# ", "x", bytes, face).report.statistics.triangles, 1u);
    EXPECT_EQ(loadRepeated(kTriangle, "\xC3\xA9", bytes / 2, face).report.statistics.triangles, 1u);
    EXPECT_EQ(loadRepeated(kTriangle + "usemtl ", "x", bytes, face).report.facesWithoutGroup, 1u);
    EXPECT_EQ(loadRepeated(kTriangle + "v ", "1", bytes, face).report.statistics.triangles, 1u);
    EXPECT_EQ(loadRepeated(kTriangle + "f 1 2 3 #", "x", bytes, face).report.statistics.triangles, 2u);
    const ChildLoad noInteger = loadRepeated(kTriangle + "f 1 2 ", "1", bytes, face);
    EXPECT_EQ(noInteger.report.statistics.triangles, 1u);
    EXPECT_EQ(noInteger.report.droppedFaces, 1u);
}

TEST_F(LimitsTest, LibraryNameOfManyMegabytesIsAMissingLibrary) {
    const int bytes = withScale(10'000'000, 200'000'000);
    const ChildLoad load = loadRepeated(kTriangle + "mtllib ", "x", bytes, "\n");
    EXPECT_FALSE(load.isLoaded);
    EXPECT_TRUE(load.error.startsWith(QLatin1String("Failed to load MTL file '")));
}

TEST_F(LimitsTest, FaceOfMillionsOfEqualCornersIsNotTriangulated) {
    const int count = withScale(1'000'000, 5'000'000);
    const ChildLoad load = loadRepeated(kTriangle + "f", " 1", count, "\n");
    EXPECT_TRUE(load.isLoaded);
    EXPECT_EQ(load.report.statistics.corners, static_cast<quint64>(count));
    EXPECT_EQ(load.report.statistics.untriangulatedFaces, 1u);
    EXPECT_THAT(load.warnings, ElementsAre(QStringLiteral("Unable to triangulate polygon.")));
}

TEST_F(LimitsTest, PolygonOfMillionsOfCornersIsTriangulatedOrReported) {
    const int count = withScale(20'000, 5'000'000);
    const auto corner = [count](int i) {
        if (i >= count)
            return (i == count ? "f " : "") + QByteArray::number(i - count + 1) + ' ';
        // A comb: every other corner lies on a long line; the others lie on a curve above it.
        const double x = i;
        return "v " + QByteArray::number(x) + ' ' +
               QByteArray::number(i % 2 == 0 ? 0.0 : 1000.0 + std::sin(x) * 100, 'f', 3) + " 0\n";
    };
    const ChildLoad load = loadInChild(_files.write("a.obj", {}, 2 * count, corner));
    EXPECT_TRUE(load.isLoaded);
    EXPECT_EQ(load.report.statistics.triangles +
                  load.report.statistics.untriangulatedFaces * static_cast<quint64>(count - 2),
              static_cast<quint64>(count - 2));
}

TEST_F(LimitsTest, ListsBeyondTheCapacityOfAStreamAreRefusedUnread) {
    const MessageLog log;
    const QString name = QStringLiteral("va_Vertex");
    const unsigned int few[] = {1, 2, 3};
    for (const quint64 count : {quint64{1} << 29, quint64{1} << 31, (quint64{1} << 31) + 1,
                                (quint64{1} << 32) + 3, quint64{1} << 62, ~quint64{0}}) {
        ModelBuilder builder;
        builder.createVertexAttribute(name, 3, 0x1406, 0, 0);
        builder.addIndicesToVertexAttribute(name, 3, few);
        builder.addIndicesToVertexAttribute(name, count, few);
        builder.addValuesToVertexAttribute(name, count, few, 0x1406);
        builder.addVertexCountsToFaces(count, few);
        EXPECT_EQ(builder.refusedStreams(), QStringList({"vertex attribute 'va_Vertex'", "the faces"}));
    }
    EXPECT_EQ(log.texts(QtWarningMsg).front(), refusal("vertex attribute 'va_Vertex'"));
}

TEST_F(LimitsTest, SparseFilesOfGigabytesAreReadToTheirEnd) {
    if (!isLongRun())
        GTEST_SKIP() << "reads gigabytes; set VELMODEL_TEST_SCALE to run it";
    for (const qint64 size : {(qint64{1} << 31) - 1, (qint64{1} << 31) + 1, (qint64{1} << 32) + 1}) {
        const QByteArray tail = "\nf 1 2 3\n";
        const QString path = _files.repeat("a.obj", kTriangle, "f 1 2 3\n", 1);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.resize(size) && file.seek(size - tail.size()) && file.write(tail) == tail.size());
        file.close();
        const ChildLoad load = loadInChild(path);
        EXPECT_TRUE(load.isLoaded);
        EXPECT_EQ(load.report.statistics.triangles, 2u) << size;
        EXPECT_EQ(load.report.bytesRead, size);
        EXPECT_LE(load.peakBytes, quint64{2} << 30);
    }
}

TEST_F(LimitsTest, TextBeyondTheCapacityOfAStreamFailsTheLoad) {
    if (!isLongRun())
        GTEST_SKIP() << "takes gigabytes of memory; set VELMODEL_TEST_SCALE to run it";
    for (const char* line : {"v\n", "f 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1\n"}) {
        const bool isVertex = line[0] == 'v';
        const ChildLoad load = loadRepeated("v\n", line, isVertex ? 180'000'000 : 23'000'000);
        EXPECT_FALSE(load.isLoaded);
        EXPECT_EQ(load.error, QStringLiteral("Failed to load OBJ file '%1'").arg(_files.path("a.obj")));
        EXPECT_THAT(load.warnings, ElementsAre(refusal("vertex attribute 'va_Vertex'")));
    }
}

} // namespace Atelier::Vel
