#include "import/facecheck.h"

#include <QtCore/QBuffer>
#include <QtCore/QTextStream>

#include <gmock/gmock.h>

namespace Atelier::Vel {

namespace {

using testing::ElementsAre;

/// "line:column text" of the faults in `text`, which has 5 positions, 4 texture coordinates and 3 normals.
QStringList check(
    const QByteArray& text, const LoadRepairs& repairs = {}, const std::function<void()>& poll = [] {}) {
    QBuffer buffer;
    buffer.setData(text);
    EXPECT_TRUE(buffer.open(QIODevice::ReadOnly | QIODevice::Text));
    QTextStream stream(&buffer);
    LineSourceOptions lines;
    lines.numbersLines = true;
    lines.blockBytes = 64;
    ObjReader reader(&stream, lines);
    DiagnosticLog log;
    ObjLineCounts counts;
    counts.positions = 5;
    counts.texCoords = 4;
    counts.normals = 3;
    FaceCheck("m.obj", counts, repairs, log).read(reader, poll);
    LoadReport report;
    log.copyTo(report);
    QStringList result;
    for (const LoadDiagnostic& at : report.diagnostics)
        result.append(QStringLiteral("%1:%2 %3").arg(at.line).arg(at.column).arg(at.text));
    return result;
}

} // namespace

TEST(FaceCheckTest, LimitsAreExact) {
    EXPECT_THAT(check("f 5/4/3 1/1/1 2\nf 6 1 2\nf 1/5 1 2\nf 1//4 1 2\n"),
                ElementsAre("2:3 6", "3:3 1/5", "4:3 1//4"));
}

TEST(FaceCheckTest, PlainAndOtherLinesAreCounted) {
    const QByteArray plain = "v 1 2 3\nf 1 2 3\nvn 0 0 1\n";
    EXPECT_THAT(
        check(plain + "f 1 2 6\n# x\n" + plain + "\tf 1 2 6\n" + plain + plain + "f 1 2 6 # y\r\nf 7\n"),
        ElementsAre("4:7 6", "9:8 6", "16:7 6", "17:3 7"));
}

TEST(FaceCheckTest, LongTextsArePolled) {
    const QByteArray text = QByteArray("f 1 2 3\n").repeated(9 << 17);
    int polls = 0;
    check(text, {}, [&polls] { ++polls; });
    EXPECT_EQ(polls, 2) << "for 9 MiB";
    const auto refusing = [] { throw 1; };
    EXPECT_THROW(check(text, {}, refusing), int);
}

TEST(FaceCheckTest, DroppedFaceHasNoOtherFault) {
    LoadRepairs repairs;
    repairs.dropUnplacedFaces = true;
    EXPECT_THAT(check("f 6//9 1/9 2\nf 1//9 2 3\n", repairs), ElementsAre("1:3 6//9", "2:3 1//9"));
}

TEST(FaceCheckTest, MissingIndexOfANormalIsAFaultIfNormalsAreGenerated) {
    LoadRepairs repairs;
    EXPECT_THAT(check("f 1//1 2 3\n", repairs), testing::IsEmpty());
    repairs.generateMissingNormals = true;
    EXPECT_THAT(check("f 1//1 2 3\n", repairs), ElementsAre("1:8 2"));
}

} // namespace Atelier::Vel
