// What of a model `velmodel render` shows, and from where: parts, views, seams.

#include <QtCore/QFile>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include "picturecomparison.h"
#include "program.h"
#include "support/messagelog.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Testing {

namespace {

class RenderedPartsTest : public testing::Test {
protected:
    ProgramResult run(const QString& model, const QStringList& options) const {
        return runProgram(
            QStringList{"render", model, "-o", "-", "--resolution", "40x40", "--no-background"} + options);
    }
    QImage picture(const QString& model, const QStringList& options = {}) const {
        const ProgramResult result = run(model, options);
        EXPECT_EQ(result.exitCode, 0) << result.errors.toStdString();
        return QImage::fromData(result.output, "PNG");
    }
    QRgb middle(const QString& model, const QStringList& options) const {
        return picture(model, options).pixel(20, 20);
    }

    /// A large green wall behind a red square and a blue one, with names for all of them.
    QString scene() const {
        _folder.write("m.mtl", "newmtl red\nKd 1 0 0\nnewmtl green\nKd 0 1 0\nnewmtl blue\nKd 0 0 1\n");
        return _folder.write(
            "m.obj", "mtllib m.mtl\n" + square(-9, -9, 9, -5) + square(1, 1, 2, 0) + square(3, 1, 4, 0) +
                         "o wall\nusemtl green\nf 1 2 3 4\no signs\ng left sign\nusemtl red\n"
                         "f 5 6 7 8\ng right\nusemtl blue\nf 9 10 11 12\n");
    }
    // The corners of a square that faces the front.
    static QByteArray square(int left, int bottom, int right, int depth) {
        const int top = bottom + right - left;
        QByteArray text;
        for (const auto& [x, y] : {std::pair(left, bottom), {right, bottom}, {right, top}, {left, top}})
            text += "v " + QByteArray::number(x) + ' ' + QByteArray::number(y) + ' ' +
                    QByteArray::number(depth) + '\n';
        return text;
    }

    TemporaryFolder _folder;
};

const QStringList kFront = {"--view", "front", "--orthographic"};

} // namespace

TEST_F(RenderedPartsTest, PartIsShownAloneAndFillsThePicture) {
    const QImage wall = picture(scene(), kFront + QStringList{"--part", "wall"});
    const QImage sign = picture(scene(), kFront + QStringList{"--part", "signs/left sign"});
    for (const QPoint corner : {QPoint(2, 2), QPoint(37, 2), QPoint(2, 37), QPoint(37, 37), QPoint(20, 20)}) {
        EXPECT_GT(qGreen(wall.pixel(corner)), 100);
        EXPECT_EQ(qRed(wall.pixel(corner)), 0);
        EXPECT_GT(qRed(sign.pixel(corner)), 100);
        EXPECT_EQ(qGreen(sign.pixel(corner)), 0);
    }
}

TEST_F(RenderedPartsTest, ObjectStandsForAllItsGroups) {
    const QStringList byObject = kFront + QStringList{"--part", "signs"};
    const QStringList byGroups = kFront + QStringList{"--part", "signs/left sign", "--part", "signs/right"};
    const QImage signs = picture(scene(), byObject);
    EXPECT_EQ(signs, picture(scene(), byGroups));
    EXPECT_GT(qRed(signs.pixel(4, 20)), 100);
    EXPECT_GT(qBlue(signs.pixel(35, 20)), 100);
    EXPECT_EQ(qAlpha(signs.pixel(20, 20)), 0);
}

TEST_F(RenderedPartsTest, TransparentPartIsHiddenToo) {
    _folder.write("m.mtl", "newmtl red\nKd 1 0 0\nnewmtl glass\nKd 0 0 1\nd 0.5\n");
    const QString model =
        _folder.write("m.obj", "mtllib m.mtl\n" + square(0, 0, 4, 0) + square(0, 0, 4, 1) +
                                   "o wall\nusemtl red\nf 1 2 3 4\no pane\nusemtl glass\nf 5 6 7 8\n");
    EXPECT_GT(qBlue(middle(model, kFront)), 50);
    EXPECT_EQ(qBlue(middle(model, kFront + QStringList{"--part", "wall"})), 0);
    EXPECT_EQ(qRed(middle(model, kFront + QStringList{"--part", "pane"})), 0);
}

TEST_F(RenderedPartsTest, AllPartsTogetherAreTheWholeModel) {
    EXPECT_EQ(picture(scene(), {"--part", "wall", "--part", "signs"}), picture(scene()));
}

TEST_F(RenderedPartsTest, UnknownPartIsExitCodeOneAndTheNamesAreListed) {
    const QString model = scene();
    const ProgramResult result = run(model, {"--part", "wall", "--part", "sign"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.output.isEmpty());
    EXPECT_EQ(result.errors, QStringLiteral("velmodel: %1: There is no part 'sign'; the parts are 'wall', "
                                            "'signs/left sign', 'signs/right'\n")
                                 .arg(model));
}

TEST_F(RenderedPartsTest, LongListsOfNamesAreCut) {
    QByteArray text = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
    for (int part = 0; part < 23; ++part)
        text += "o p" + QByteArray::number(part) + "\nf 1 2 3\n";
    const QString errors = run(_folder.write("many.obj", text), {"--part", "x"}).errors;
    EXPECT_TRUE(errors.endsWith("'p18', 'p19' and 3 more\n")) << errors.toStdString();
}

TEST_F(RenderedPartsTest, ModelWithoutPartsSaysSo) {
    const QString model = _folder.write("plain.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    const ProgramResult result = run(model, {"--part", "x"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors,
              QStringLiteral("velmodel: %1: There is no part 'x'; the model has no parts\n").arg(model));
}

TEST_F(RenderedPartsTest, ViewsShowTheirSide) {
    _folder.write("cube.mtl", "newmtl r\nKd 1 0 0\nnewmtl g\nKd 0 1 0\nnewmtl b\nKd 0 0 1\n"
                              "newmtl y\nKd 1 1 0\nnewmtl m\nKd 1 0 1\nnewmtl c\nKd 0 1 1\n");
    const QString cube = _folder.write("cube.obj", "mtllib cube.mtl\n"
                                                   "v -1 -1 -1\nv 1 -1 -1\nv -1 1 -1\nv 1 1 -1\n"
                                                   "v -1 -1 1\nv 1 -1 1\nv -1 1 1\nv 1 1 1\n"
                                                   "usemtl r\nf 1 3 7 5\nusemtl g\nf 2 4 8 6\n"
                                                   "usemtl b\nf 1 2 6 5\nusemtl y\nf 3 4 8 7\n"
                                                   "usemtl m\nf 1 2 4 3\nusemtl c\nf 5 6 8 7\n");
    const std::pair<const char*, QColor> views[] = {{"left", Qt::red},     {"right", Qt::green},
                                                    {"bottom", Qt::blue},  {"top", Qt::yellow},
                                                    {"back", Qt::magenta}, {"front", Qt::cyan}};
    for (const auto& [name, colour] : views) {
        const QImage side = picture(cube, {"--view", name, "--orthographic"});
        const QRgb pixel = side.pixel(20, 20);
        EXPECT_EQ(qRed(pixel) > 60, colour.red() > 0) << name;
        EXPECT_EQ(qGreen(pixel) > 60, colour.green() > 0) << name;
        EXPECT_EQ(qBlue(pixel) > 60, colour.blue() > 0) << name;
        EXPECT_EQ(side.pixel(2, 2) == 0U, false) << "without perspective, one side fills the picture";
    }
}

TEST_F(RenderedPartsTest, SeamOfATextureIsInvisible) {
    // A bent strip that a seam of the texture coordinates splits in the middle; it has no normals.
    const QByteArray positions = "v -1 -1 -0.6\nv 0 -1 0\nv 1 -1 -0.6\nv -1 1 -0.6\nv 0 1 0\nv 1 1 -0.6\n";
    const QString seam = _folder.write("seam.obj", positions + "vt 0 0\nvt 1 0\nvt 0.5 0\n"
                                                               "f 1/1 2/2 5/2 4/1\nf 2/3 3/1 6/1 5/3\n");
    const QString whole = _folder.write("whole.obj", positions + "f 1 2 5 4\nf 2 3 6 5\n");
    const QImage seen = picture(seam, {"--view", "front"});
    EXPECT_EQ(seen, picture(whole, {"--view", "front"}));
    for (int x = 4; x < 36; ++x)
        EXPECT_LE(largestStep(seen.pixel(x, 20), seen.pixel(x + 1, 20)), 8) << x;
    EXPECT_GT(largestStep(seen.pixel(4, 20), seen.pixel(35, 20)), 15) << "the strip is bent";
    const QImage exact = picture(seam, {"--view", "front", "--exact"});
    EXPECT_GT(largestStep(exact.pixel(19, 20), exact.pixel(21, 20)), 15) << "an exact load shows the seam";
}

} // namespace Atelier::Vel::Testing
