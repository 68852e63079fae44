// Turntables: which frames are written, what they show, and which files remain after a failure.

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include "picturecomparison.h"
#include "program.h"
#include "support/messagelog.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Testing {

namespace {

using testing::HasSubstr;

const QColor kBackground(1, 20, 200);

class TurntableTest : public testing::Test {
protected:
    /// Level with the model, so that nothing above or below it is seen.
    ProgramResult turn(const QString& model, const QStringList& options) const {
        return runProgram(QStringList{"render", model, "-o", _folder.path("turn.png"), "--resolution",
                                      "24,24", "--camera-elevation", "0", "--background",
                                      kBackground.name()} +
                          options);
    }
    QStringList pictures() const {
        return QDir(_folder.path("")).entryList({"*.png"}, QDir::Files | QDir::Hidden);
    }
    QImage frame(const char* number) const {
        return QImage(_folder.path(QStringLiteral("turn-%1.png").arg(QLatin1String(number))));
    }
    bool isBackground(const char* number) const {
        const QImage picture = frame(number).convertToFormat(QImage::Format_RGB32);
        QImage background(24, 24, QImage::Format_RGB32);
        background.fill(kBackground);
        return picture == background;
    }

    /// Upright and without thickness: invisible from the sides.
    QString standingSquare() const {
        return _folder.write("standing.obj", "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\n");
    }
    /// Flat on the ground: invisible from every direction.
    QString lyingSquare() const {
        return _folder.write("lying.obj", "v -1 0 -1\nv 1 0 -1\nv 1 0 1\nv -1 0 1\nf 1 2 3 4\n");
    }

    /// Two upright strips that face each other: from the front they stand left and right.
    QString twoPosts() const {
        return _folder.write("posts.obj", "v -1 -1 -0.1\nv -1 -1 0.1\nv -1 1 0.1\nv -1 1 -0.1\n"
                                          "v 1 -1 -0.1\nv 1 -1 0.1\nv 1 1 0.1\nv 1 1 -0.1\n"
                                          "f 1 2 3 4\nf 5 6 7 8\n");
    }

    TemporaryFolder _folder;
};

} // namespace

TEST_F(TurntableTest, FramesOfAFlatModelSeenFromItsEdgeShowTheBackground) {
    const ProgramResult result = turn(standingSquare(), {"--camera-azimuth", "0", "--turntable", "4"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, QString());
    EXPECT_EQ(pictures(), QStringList({"turn-000.png", "turn-001.png", "turn-002.png", "turn-003.png"}));
    EXPECT_FALSE(isBackground("000"));
    EXPECT_TRUE(isBackground("001"));
    EXPECT_FALSE(isBackground("002"));
    EXPECT_TRUE(isBackground("003"));
}

TEST_F(TurntableTest, FirstFrameMayShowNothing) {
    EXPECT_EQ(turn(standingSquare(), {"--camera-azimuth", "90", "--turntable", "4"}).exitCode, 0);
    EXPECT_EQ(pictures().size(), 4);
    EXPECT_TRUE(isBackground("000"));
    EXPECT_FALSE(isBackground("001"));
    EXPECT_TRUE(isBackground("002"));
    EXPECT_FALSE(isBackground("003"));
}

TEST_F(TurntableTest, LeadingEmptyFramesAreWrittenInOrder) {
    const ProgramResult result = turn(twoPosts(), {"--camera-azimuth", "0", "--turntable", "8",
                                                   "--camera-zoom", "20", "--verbose", "info"});
    EXPECT_EQ(result.exitCode, 0);
    QStringList written;
    for (const QString& line : result.errors.split('\n'))
        if (line.startsWith("velmodel: Wrote " + _folder.path("")))
            written.append(line.section('-', -1));
    EXPECT_EQ(written, QStringList({"000.png", "001.png", "002.png", "003.png", "004.png", "005.png",
                                    "006.png", "007.png"}));
    for (const char* number : {"000", "001", "003", "004", "005", "007"})
        EXPECT_TRUE(isBackground(number)) << number;
    for (const char* number : {"002", "006"})
        EXPECT_FALSE(isBackground(number)) << number;
}

TEST_F(TurntableTest, OnlyEmptyFramesAreExitCodeOneAndNoFile) {
    const QString standing = standingSquare();
    const QString lying = lyingSquare();
    const std::pair<QString, QStringList> turns[] = {
        {standing, {"--camera-azimuth", "90", "--turntable", "2"}},
        {standing, {"--camera-azimuth", "90", "--turntable", "1"}},
        {lying, {"--turntable", "5"}}};
    for (const auto& [model, options] : turns) {
        const ProgramResult result = turn(model, options);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(
            result.errors,
            QStringLiteral("velmodel: %1: Every picture would be empty: nothing of the model is in view\n")
                .arg(model));
    }
    EXPECT_EQ(pictures(), QStringList());
}

TEST_F(TurntableTest, OnlyEmptyFramesLeaveEarlierPicturesAlone) {
    _folder.write("turn-000.png", "an earlier picture");
    EXPECT_EQ(turn(lyingSquare(), {"--turntable", "3"}).exitCode, 1);
    QFile file(_folder.path("turn-000.png"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "an earlier picture");
}

TEST_F(TurntableTest, SinglePictureFromTheEdgeIsExitCodeOneAndNoFile) {
    const QString model = standingSquare();
    const ProgramResult result = turn(model, {"--camera-azimuth", "90"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors,
              QStringLiteral("velmodel: %1: The picture would be empty: nothing of the model is in view\n")
                  .arg(model));
    EXPECT_EQ(pictures(), QStringList());
}

TEST_F(TurntableTest, EmptyFrameThatCannotBeWrittenIsExitCodeFour) {
    ASSERT_TRUE(QDir(_folder.path("")).mkdir("turn-001.png"));
    const ProgramResult result =
        turn(twoPosts(), {"--camera-azimuth", "0", "--turntable", "8", "--camera-zoom", "20"});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_THAT(result.errors.toStdString(), HasSubstr("turn-001.png: The picture cannot be written: "));
    EXPECT_EQ(pictures(), QStringList("turn-000.png"));
}

TEST_F(TurntableTest, FramesAreEvenlySpacedAndStartAtTheAzimuth) {
    // Four walls of four colours, equally large from each side.
    _folder.write("m.mtl",
                  "newmtl r\nKd 1 0 0\nnewmtl g\nKd 0 1 0\nnewmtl b\nKd 0 0 1\nnewmtl w\nKd 1 1 1\n");
    const QString cross = _folder.write(
        "m.obj",
        "mtllib m.mtl\nv 0 -1 0\nv 0 1 0\nv 1 -1 0\nv 1 1 0\nv 0 -1 1\nv 0 1 1\nv -1 -1 0\nv -1 1 0\n"
        "v 0 -1 -1\nv 0 1 -1\nusemtl r\nf 1 3 4 2\nusemtl g\nf 1 5 6 2\nusemtl b\nf 1 7 8 2\n"
        "usemtl w\nf 1 9 10 2\n");
    ASSERT_EQ(turn(cross, {"--camera-azimuth", "20", "--turntable", "4"}).exitCode, 0);
    const char* const numbers[] = {"000", "001", "002", "003"};
    for (int n = 0; n < 4; ++n) {
        const QString azimuth = QString::number(20 + 90 * n);
        ASSERT_EQ(turn(cross, {"--camera-azimuth", azimuth}).exitCode, 0);
        const PictureDifference apart = difference(frame(numbers[n]), QImage(_folder.path("turn.png")));
        EXPECT_LT(apart.mean, 0.5) << n;
    }
    EXPECT_GT(difference(frame("000"), frame("002")).mean, 2) << "other walls are in front";
}

} // namespace Atelier::Vel::Testing
