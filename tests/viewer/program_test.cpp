#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QRegularExpression>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtCore/QXmlStreamReader>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include "support/sanitizer.h"

namespace Atelier::Vel::Viewer::Testing {

namespace {

constexpr int kTimeout = 60'000;
const QString kDesktop = QStringLiteral(VELMODEL_SOURCE_DIR "/tools/velview/desktop/");

/// A process that has ended.
struct Ended {
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

QProcessEnvironment withoutDisplay() {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(variable);
    return environment;
}

Ended run(const QString& program, const QStringList& arguments, const QProcessEnvironment& environment) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(kTimeout)) << process.errorString().toStdString();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
}

Ended viewer(const QStringList& arguments) {
    return run(VELVIEW_PROGRAM, arguments, withoutDisplay());
}

void writeProgram(const QString& path, const QByteArray& shellText) {
    QFile program(path);
    ASSERT_TRUE(program.open(QIODevice::WriteOnly));
    program.write("#!/bin/sh\n" + shellText);
    program.close();
    ASSERT_TRUE(program.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
}

} // namespace

TEST(ProgramTest, AnswersNeedNoDisplay) {
    EXPECT_EQ(viewer({"--help"}).exitCode, 0);
    EXPECT_TRUE(viewer({"--version"}).output.startsWith("velview "));
}

TEST(ProgramTest, ExitCodesSayWhatIsWrong) {
    const Ended wrong = viewer({"--unknown"});
    EXPECT_EQ(wrong.exitCode, 2);
    EXPECT_EQ(wrong.errors, "velview: Unknown option 'unknown'. Try 'velview --help'.\n");
    const Ended displayless = viewer({"a.obj"});
    EXPECT_EQ(displayless.exitCode, 3);
    EXPECT_EQ(displayless.errors, "velview: There is no display\n");
}

TEST(ProgramTest, APlatformWithoutOpenGLIsReported) {
    QProcessEnvironment environment = withoutDisplay();
    environment.insert("QT_QPA_PLATFORM", "minimal");
    environment.insert("XDG_RUNTIME_DIR", QTemporaryDir().path());
    const Ended ended = run(VELVIEW_PROGRAM, {}, environment);
    EXPECT_EQ(ended.exitCode, 3);
    EXPECT_TRUE(ended.errors.contains("velview: No OpenGL: ")) << ended.errors.toStdString();
}

TEST(ThumbnailerTest, DrawsASmallPicture) {
#if VELMODEL_ADDRESS_SANITIZER || VELMODEL_THREAD_SANITIZER
    GTEST_SKIP() << "the sanitizer reserves more memory than the limit";
#endif
    const QTemporaryDir folder;
    QProcessEnvironment environment = withoutDisplay();
    environment.insert("PATH", QStringLiteral(VELMODEL_PROGRAM_FOLDER ":") + environment.value("PATH"));
    const QString picture = folder.filePath("picture"); // without an extension, as desktops name it
    const Ended ended = run(kDesktop + "velmodel-thumbnailer",
                            {VELMODEL_SOURCE_DIR "/samples/gear/gear.obj", picture, "96"}, environment);
    EXPECT_EQ(ended.exitCode, 0) << ended.errors.toStdString();
    EXPECT_EQ(QImage(picture, "png").size(), QSize(96, 96));
    EXPECT_NE(
        run(kDesktop + "velmodel-thumbnailer", {"/no/such.obj", folder.filePath("none"), "96"}, environment)
            .exitCode,
        0);
    EXPECT_FALSE(QFile::exists(folder.filePath("none")));
}

TEST(ThumbnailerTest, LimitsTimeMemoryAndFiles) {
    const QTemporaryDir folder;
    writeProgram(folder.filePath("timeout"), "echo $1 seconds\nshift\nexec \"$@\"\n");
    writeProgram(folder.filePath("velmodel"), "ulimit -d\necho \"$@\"\nexit 7\n");
    QProcessEnvironment environment = withoutDisplay();
    environment.insert("PATH", folder.path() + ":" + environment.value("PATH"));
    const Ended ended =
        run(kDesktop + "velmodel-thumbnailer", {"a b.obj", folder.filePath("out"), "64"}, environment);
    EXPECT_EQ(ended.exitCode, 7);
    EXPECT_THAT(ended.output.toStdString(),
                ::testing::StartsWith("10 seconds\n524288\nrender --confined --no-background a b.obj -o "));
    EXPECT_THAT(ended.output.toStdString(), ::testing::EndsWith("--resolution 64x64\n"));
}

TEST(DesktopTest, FilesNameTheViewerAndTheType) {
    QSettings entry(kDesktop + "velview.desktop", QSettings::IniFormat);
    entry.beginGroup("Desktop Entry");
    EXPECT_EQ(entry.value("Exec").toString(), "velview %F");
    QSettings thumbnailer(kDesktop + "velmodel.thumbnailer", QSettings::IniFormat);
    EXPECT_EQ(thumbnailer.value("Thumbnailer Entry/Exec").toString(), "velmodel-thumbnailer %i %o %s");
    QFile types(kDesktop + "velview-mime.xml");
    ASSERT_TRUE(types.open(QIODevice::ReadOnly));
    QXmlStreamReader xml(&types);
    QString type;
    while (!xml.atEnd())
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == QLatin1String("mime-type"))
            type = xml.attributes().value("type").toString();
    EXPECT_FALSE(xml.hasError());
    EXPECT_EQ(type, "model/obj");
    EXPECT_GT(QImage(kDesktop + "velview.svg").width(), 0);
}

} // namespace Atelier::Vel::Viewer::Testing
