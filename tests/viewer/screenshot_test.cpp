#include "screenshot.h"

#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

namespace Atelier::Vel::Viewer::Testing {

TEST(ScreenshotTest, EveryPictureHasAFileOfItsOwn) {
    const QTemporaryDir folder;
    QImage picture(3, 2, QImage::Format_RGB32);
    picture.fill(Qt::blue);
    QString error;
    EXPECT_EQ(saveNumbered(picture, folder.path(), "gear", error), folder.filePath("gear.png"));
    EXPECT_EQ(saveNumbered(picture, folder.path(), "gear", error), folder.filePath("gear-2.png"));
    EXPECT_EQ(saveNumbered(picture, folder.path(), "gear", error), folder.filePath("gear-3.png"));
    EXPECT_EQ(saveNumbered(picture, folder.path(), "", error), folder.filePath("velview.png"));
    EXPECT_TRUE(error.isNull());
    EXPECT_EQ(QImage(folder.filePath("gear-2.png")).pixelColor(1, 1), QColor(Qt::blue));
}

TEST(ScreenshotTest, AFailureSaysWhy) {
    QString error;
    EXPECT_TRUE(saveNumbered(QImage(3, 2, QImage::Format_RGB32), "/no/such", "a", error).isNull());
    EXPECT_THAT(error.toStdString(),
                ::testing::StartsWith("/no/such/a.png: The picture cannot be written: "));
}

} // namespace Atelier::Vel::Viewer::Testing
