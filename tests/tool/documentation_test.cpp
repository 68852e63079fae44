// Every example of docs/velmodel.md works as documented.

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QSet>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include <velmodel/drawdata.h>

#include "support/messagelog.h"

namespace Atelier::Vel::Testing {

namespace {

QByteArray documentation() {
    QFile file(VELMODEL_SOURCE_DIR "/docs/velmodel.md");
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

std::vector<std::string> examples() {
    std::vector<std::string> commands;
    bool isInExample = false;
    for (const QByteArray& line : documentation().split('\n')) {
        if (line.startsWith("```"))
            isInExample = line == "```sh";
        else if (isInExample)
            commands.push_back(line.toStdString());
    }
    return commands;
}

class ExampleTest : public testing::TestWithParam<std::string> {};

TEST_P(ExampleTest, WorksAsWritten) {
    if (!DrawData::canOptimise() && QString::fromStdString(GetParam()).contains("--optimise"))
        GTEST_SKIP() << "this build cannot optimise";
    const QTemporaryDir folder;
    ASSERT_TRUE(QFile::link(VELMODEL_SOURCE_DIR "/samples", folder.filePath("samples")));
    QProcess shell;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString programs = QFileInfo(VELMODEL_PROGRAM).absolutePath();
    environment.insert("PATH", programs + QLatin1Char(':') + environment.value("PATH"));
    shell.setProcessEnvironment(environment);
    shell.setWorkingDirectory(folder.path());
    shell.start("/bin/sh", {"-c", QString::fromStdString(GetParam())});
    ASSERT_TRUE(shell.waitForFinished(300000));
    EXPECT_EQ(shell.exitCode(), 0);
    EXPECT_EQ(shell.readAllStandardError().toStdString(), "");
    const bool leftSomething =
        !shell.readAllStandardOutput().isEmpty() || !QDir(folder.path()).entryList(QDir::Files).isEmpty();
    EXPECT_TRUE(leftSomething);
}

INSTANTIATE_TEST_SUITE_P(Velmodel, ExampleTest, testing::ValuesIn(examples()));

QStringList optionsOf(const char* command) {
    QProcess help;
    help.start(VELMODEL_PROGRAM, {command, "--help"});
    EXPECT_TRUE(help.waitForFinished());
    QStringList options;
    for (const QByteArray& line : help.readAllStandardOutput().split('\n'))
        if (const int start = line.indexOf("--"); line.startsWith("  -") && start >= 0)
            options.append(QString::fromLatin1(line.mid(start).split(' ').first()));
    EXPECT_GE(options.size(), 4);
    return options;
}

TEST(DocumentationTest, NamesEveryOptionAndNoOther) {
    QSet<QString> options;
    for (const char* command : {"info", "dump", "render", "check"})
        for (const QString& option : optionsOf(command))
            options.insert(option);
    if (!DrawData::canOptimise())
        options.insert("--optimise");
    QSet<QString> named;
    const QRegularExpression word("(?<![\\w-])--[a-z][a-z-]*");
    auto words = word.globalMatch(QString::fromUtf8(documentation()));
    while (words.hasNext())
        named.insert(words.next().captured());
    EXPECT_EQ(named, options) << QStringList((named - options).values()).join(' ').toStdString() << " / "
                              << QStringList((options - named).values()).join(' ').toStdString();
}

TEST(DocumentationTest, GalleryShowsItsPicturesAndNoOther) {
    QFile page(VELMODEL_SOURCE_DIR "/docs/gallery.md");
    ASSERT_TRUE(page.open(QIODevice::ReadOnly));
    QStringList shown;
    const QRegularExpression picture("\\(images/gallery/([^)]+)\\)");
    auto pictures = picture.globalMatch(QString::fromUtf8(page.readAll()));
    while (pictures.hasNext())
        shown.append(pictures.next().captured(1));
    shown.sort();
    constexpr qint64 kMaxBytes = 600000;
    qint64 bytes = 0;
    QStringList stored;
    for (const QFileInfo& file :
         QDir(VELMODEL_SOURCE_DIR "/docs/images/gallery").entryInfoList(QDir::Files)) {
        stored.append(file.fileName());
        bytes += file.size();
        EXPECT_EQ(QImage(file.filePath()).size(), QSize(320, 240)) << file.fileName().toStdString();
    }
    EXPECT_GE(shown.size(), 10);
    EXPECT_EQ(shown, stored);
    EXPECT_LE(bytes, kMaxBytes);
}

} // namespace

} // namespace Atelier::Vel::Testing
