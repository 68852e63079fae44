#include "viewersettings.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

namespace Atelier::Vel::Viewer::Testing {

class ViewerSettingsTest : public ::testing::Test {
public:
    ViewerSettingsTest() {
        QCoreApplication::setOrganizationName("VelModel");
        QSettings::setDefaultFormat(QSettings::IniFormat);
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder.path());
    }

    QTemporaryDir folder;
};

TEST_F(ViewerSettingsTest, RecentFilesAreTheNewestFirst) {
    EXPECT_THAT(ViewerSettings::recentFiles(), ::testing::IsEmpty());
    ViewerSettings::addRecentFile("/models/a.obj");
    ViewerSettings::addRecentFile("/models/b.obj");
    ViewerSettings::addRecentFile("/models/a.obj");
    EXPECT_THAT(ViewerSettings::recentFiles(),
                ::testing::ElementsAre(QString("/models/a.obj"), QString("/models/b.obj")));
    EXPECT_EQ(ViewerSettings::lastFolder(), "/models");
    ViewerSettings::clearRecentFiles();
    EXPECT_THAT(ViewerSettings::recentFiles(), ::testing::IsEmpty());
}

TEST_F(ViewerSettingsTest, OnlyTenFilesAreRecent) {
    for (int file = 0; file < 12; ++file)
        ViewerSettings::addRecentFile(QStringLiteral("/%1.obj").arg(file));
    EXPECT_EQ(ViewerSettings::recentFiles().size(), 10);
    EXPECT_EQ(ViewerSettings::recentFiles().first(), "/11.obj");
    EXPECT_EQ(ViewerSettings::recentFiles().last(), "/2.obj");
}

TEST_F(ViewerSettingsTest, RemembersTheWindow) {
    ViewerSettings::setWindow("geometry", "panels");
    EXPECT_EQ(ViewerSettings::geometry(), "geometry");
    EXPECT_EQ(ViewerSettings::panels(), "panels");
}

TEST_F(ViewerSettingsTest, ScreenshotsHaveAFolder) {
    EXPECT_FALSE(ViewerSettings::screenshotFolder().isEmpty());
    QSettings().setValue("screenshotFolder", "/pictures");
    EXPECT_EQ(ViewerSettings::screenshotFolder(), "/pictures");
}

} // namespace Atelier::Vel::Viewer::Testing
