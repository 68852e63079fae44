#include "viewmarks.h"

#include <QtCore/QLocale>

#include <gmock/gmock.h>

namespace Atelier::Vel::Viewer::Testing {

namespace {

/// Sets the locale of the tests again, which decides how lengths are written.
class ViewMarksTest : public ::testing::Test {
protected:
    void TearDown() override { QLocale::setDefault(_locale); }

    const QLocale _locale;
};

TEST_F(ViewMarksTest, TwoPointsMakeADistanceAndAThirdBeginsAnother) {
    ViewMarks marks;
    EXPECT_TRUE(marks.isEmpty());
    marks.measure({1, 1, 1});
    EXPECT_FALSE(marks.isEmpty());
    EXPECT_TRUE(distanceLabels(marks).isEmpty());
    EXPECT_EQ(markLines(marks, 100).points().size(), 6U) << "a cross";
    marks.measure({4, 5, 1});
    ASSERT_EQ(distanceLabels(marks).size(), 1);
    EXPECT_EQ(distanceLabels(marks)[0].text, "5");
    EXPECT_EQ(distanceLabels(marks)[0].at, QVector3D(2.5F, 3, 1));
    EXPECT_EQ(markLines(marks, 100).points().size(), 14U) << "two crosses and a line";
    marks.measure({0, 0, 0});
    EXPECT_THAT(marks.measured, ::testing::ElementsAre(QVector3D(0, 0, 0)));
}

TEST_F(ViewMarksTest, ABoxHasThreeSizes) {
    QLocale::setDefault(QLocale::c());
    const QVector<MarkLabel> labels = sizeLabels({{-1, 0, 2}, {1, 5, 2.25F}, true});
    ASSERT_EQ(labels.size(), 3);
    EXPECT_EQ(labels[0].text, "2");
    EXPECT_EQ(labels[1].text, "5");
    EXPECT_EQ(labels[2].text, "0.25");
    EXPECT_EQ(labels[0].at, QVector3D(0, 0, 2.25F));
    EXPECT_EQ(labels[1].at, QVector3D(1, 2.5F, 2.25F));
    EXPECT_EQ(labels[2].at, QVector3D(1, 0, 2.125F));
}

TEST_F(ViewMarksTest, LengthsFollowTheLocale) {
    QLocale::setDefault(QLocale(QLocale::German));
    EXPECT_EQ(sizeLabels({{0, 0, 0}, {1, 0.25F, 12345}, true})[1].text, "0,25");
    EXPECT_EQ(sizeLabels({{0, 0, 0}, {1, 0.25F, 12345}, true})[2].text, "12.345");
}

TEST_F(ViewMarksTest, AnOutlineIsClosed) {
    ViewMarks marks;
    marks.outlines = {{{0, 0, 0}, {2, 0, 0}, {0, 3, 0}}};
    const PointList lines = markLines(marks, 1);
    ASSERT_EQ(lines.points().size(), 6U);
    EXPECT_EQ(lines.points()[4].position[1], 3);
    EXPECT_EQ(lines.points()[5].position[1], 0) << "the last line ends where the first begins";
    EXPECT_EQ(outlineBox(marks).maximum, QVector3D(2, 3, 0));
    EXPECT_FALSE(outlineBox({}).isValid);
}

} // namespace

} // namespace Atelier::Vel::Viewer::Testing
