#include "geometry/triangulation/polygondump.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include "support/messagelog.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;

class PolygonDumpTest : public testing::Test {
protected:
    QString path() const { return _directory.filePath(QStringLiteral("dump.obj")); }
    QByteArray written() const {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
    }

private:
    QTemporaryDir _directory;
};

constexpr float kPoints[] = {0, 0, 1, 0, 0.5F, -1e-7F};

TEST_F(PolygonDumpTest, PolygonHasOneFaceThroughAllPoints) {
    DumpPolygonOBJ(path(), 3, kPoints);
    EXPECT_EQ(written(), "v 0 0\nv 1 0\nv 0.5 -1e-07\nf  1 2 3\n");
}

TEST_F(PolygonDumpTest, TrianglesHaveAFaceEach) {
    DumpTrianglesOBJ(path(), 3, kPoints, {0, 1, 2, 2, 1, 0});
    EXPECT_EQ(written(), "v 0 0\nv 1 0\nv 0.5 -1e-07\nf 1 2 3\nf 3 2 1\n");
}

TEST_F(PolygonDumpTest, NumbersAreSignedAndAnUnfinishedTriangleIsNotWritten) {
    DumpTrianglesOBJ(path(), 0, nullptr, {0xFFFFFFFEU, 0xFFFFFFFFU, 0x7FFFFFFFU, 1, 2});
    EXPECT_EQ(written(), "f -1 0 -2147483648\n");
}

TEST_F(PolygonDumpTest, NoPointsLeaveABareFace) {
    DumpPolygonOBJ(path(), 0, nullptr);
    EXPECT_EQ(written(), "f \n");
}

TEST_F(PolygonDumpTest, FileIsTruncated) {
    DumpPolygonOBJ(path(), 3, kPoints);
    DumpPolygonOBJ(path(), 1, kPoints);
    EXPECT_EQ(written(), "v 0 0\nf  1\n");
}

TEST_F(PolygonDumpTest, UnopenableFileGivesAWarning) {
    const QString missing = path() + QStringLiteral("/none/dump.obj");
    Testing::MessageLog log;
    DumpPolygonOBJ(missing, 3, kPoints);
    DumpTrianglesOBJ(missing, 3, kPoints, {0, 1, 2});
    const QString expected = QStringLiteral("Couldn't write obj file ") + missing;
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(expected, expected));
    EXPECT_FALSE(log.messages().front().hasContext);
}

} // namespace
} // namespace Atelier::Vel
