// Every example of docs/velmodel.md does what it says.

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

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

TEST(DocumentationTest, NamesEveryOption) {
    const QByteArray text = documentation();
    for (const char* command : {"info", "dump", "render"}) {
        QProcess help;
        help.start(VELMODEL_PROGRAM, {command, "--help"});
        ASSERT_TRUE(help.waitForFinished());
        int options = 0;
        for (const QByteArray& line : help.readAllStandardOutput().split('\n')) {
            const int start = line.indexOf("--");
            if (!line.startsWith("  -") || start < 0)
                continue;
            const QByteArray option = line.mid(start).split(' ').first();
            EXPECT_TRUE(text.contains('`' + option) || text.contains(", `" + option) ||
                        text.contains("`, `" + option))
                << option.toStdString();
            ++options;
        }
        EXPECT_GE(options, 4);
    }
}

} // namespace

} // namespace Atelier::Vel::Testing
