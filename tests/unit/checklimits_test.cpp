// The tables of an examination are limited, and what did not fit is named.

#include <cmath>

#include <QtCore/QStringList>
#include <QtCore/QTextStream>

#include <gmock/gmock.h>

#include "check/faceexamination.h"
#include "check/objexamination.h"
#include "check/vertexlines.h"
#include "checkedmodel.h"
#include "geometry/shapes/facematches.h"

namespace Atelier::Vel {

namespace {

using Testing::CheckedModel;
using testing::ElementsAre;
using testing::IsEmpty;

/// Four positions of a square, and faces without texture coordinates and normals.
class LimitedExamination {
public:
    explicit LimitedExamination(const FaceExamination::Options& options) : _faces("m.obj", _log, options) {
        const float square[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
        _faces.addPositions(square, 4);
    }

    void add(const std::vector<quint32>& positions, quint32 known = 4) {
        const std::vector<quint32> none(positions.size(), kNoIndex);
        ObjLineCounts counts;
        counts.positions = known;
        _faces.add(
            {positions.data(), none.data(), none.data(), static_cast<quint32>(positions.size()), 0, ++_line},
            counts);
    }
    QStringList finish() {
        ObjLineCounts counts;
        counts.positions = 4;
        _faces.finish(counts);
        return _faces.notExamined();
    }
    quint64 count(CheckCode code) const {
        ModelCheck check;
        _log.moveTo(check);
        return check.counts.value(code);
    }

private:
    FindingLog _log;
    FaceExamination _faces;
    qint64 _line = 0;
};

} // namespace

TEST(CheckLimitsTest, FacesThatNameLaterValuesAreKeptUpToALimit) {
    FaceExamination::Options options;
    options.deferredCorners = 6;
    LimitedExamination examination(options);
    for (int i = 0; i < 3; ++i)
        examination.add({0, 1, 9}, 3);
    EXPECT_THAT(examination.finish(),
                ElementsAre("1 faces of 'm.obj', because they name values that follow or do not exist"));
    EXPECT_EQ(examination.count(CheckCode::PositionOutOfRange), 2U);
}

// Whether they use the other vertices is not known.
TEST(CheckLimitsTest, UnusedVerticesAreKnownOnlyIfAllFacesWereExamined) {
    for (const quint64 limit : {6U, 9U}) {
        FaceExamination::Options options;
        options.deferredCorners = limit;
        FindingLog log;
        ObjExamination examination("m.obj", ModelFiles(), LoadOptions::forgiving(), options, log);
        QString text = QStringLiteral("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 9\nf 1 2 9\nf 1 2 9\nv 5 5 5\n");
        QTextStream stream(&text);
        for (ObjReader reader(&stream); reader.hasNext(); reader.next())
            examination.takeRecord(reader, reader.read());
        examination.finish();
        ModelCheck check;
        log.moveTo(check);
        EXPECT_EQ(check.counts.contains(CheckCode::VertexUnused), limit == 9U);
        EXPECT_EQ(examination.notExamined().isEmpty(), limit == 9U);
    }
}

TEST(CheckLimitsTest, EdgesAreComparedUpToALimit) {
    FaceExamination::Options options;
    options.comparisons = 1;
    LimitedExamination examination(options);
    examination.add({0, 1, 3, 2});
    EXPECT_EQ(examination.finish().size(), 1);
    LimitedExamination unlimited({});
    unlimited.add({0, 1, 3, 2});
    EXPECT_THAT(unlimited.finish(), IsEmpty());
    EXPECT_EQ(unlimited.count(CheckCode::FaceCrossesItself), 1U);
}

TEST(CheckLimitsTest, FacesAreComparedUpToALimit) {
    FaceMatches matches;
    for (quint32 i = 0; i < FaceMatches::kMaxFaces; ++i) {
        const quint32 corners[] = {i, i + 1, i + 2};
        ASSERT_EQ(matches.add(corners, 3, i).match, FaceMatches::Match::None);
    }
    EXPECT_EQ(matches.skipped(), 0U);
    const quint32 first[] = {0, 1, 2};
    EXPECT_EQ(matches.add(first, 3, 0).match, FaceMatches::Match::None);
    EXPECT_EQ(matches.skipped(), 1U);
}

TEST(CheckLimitsTest, LinesOfVerticesAreKnownUpToALimit) {
    VertexLines lines;
    const auto count = static_cast<qint64>(VertexLines::kMaxRuns);
    // No two distances are equal, and a run holds two lines.
    qint64 line = 1;
    for (qint64 i = 0; i < 2 * count + 2; ++i)
        lines.add(line += i + 1);
    EXPECT_EQ(lines.lineOf(0), 2);
    EXPECT_EQ(lines.lineOf(static_cast<quint32>(2 * count - 1)), 1 + count * (2 * count + 1));
    EXPECT_EQ(lines.lineOf(static_cast<quint32>(2 * count)), 0);
}

TEST(CheckLimitsTest, LargePolygonsAreCutButNotSearchedForCrossings) {
    QByteArray text = "vn 0 0 1\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1//1 2//1 3//1\n";
    QByteArray face = "f";
    for (quint32 i = 0; i <= FaceExamination::kMaxCorners; ++i) {
        text += "v " + QByteArray::number(i) + " 2 0\n";
        face += " " + QByteArray::number(4 + i) + "//1";
    }
    const CheckedModel model(text + face + "\n");
    const ModelCheck check = model.check();
    EXPECT_EQ(check.counts.value(CheckCode::FaceNotCut), 1U) << "all corners lie on a line";
    EXPECT_THAT(check.notExamined, ElementsAre("Whether 1 faces of '" + model.path("m.obj") +
                                               "' with more than 10000 corners cross themselves"));
}

} // namespace Atelier::Vel
