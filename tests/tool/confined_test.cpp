// --confined, observed from outside: the files that the program opens.

#include <QtCore/QDir>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QStandardPaths>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include "program.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Testing {

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

/// A model that names files outside of its folder in every possible way.
class ConfinedTest : public testing::Test {
protected:
    ConfinedTest() {
        for (const char* folder : {"outside", "model/sub"})
            EXPECT_TRUE(QDir(_top.path("")).mkpath(folder));
        EXPECT_TRUE(QImage(2, 2, QImage::Format_RGB32).save(_top.path("outside/secret.png")));
        EXPECT_TRUE(QImage(2, 2, QImage::Format_RGB32).save(_top.path("model/own.png")));
        _top.write("outside/secret.mtl", "newmtl stolen\nKd 1 0 0\n");
        link("../outside/secret.png", "model/link.png");
        link(_top.path("outside"), "model/sub/folder");
        _top.write("model/maps.mtl", "newmtl a\nKd 1 1 1\nmap_Kd ../outside/secret.png\nmap_Ks link.png\n"
                                     "newmtl b\nKd 1 1 1\nmap_Kd sub/folder/secret.png\n"
                                     "map_Ks ..\\outside\\secret.png\n"
                                     "newmtl c\nKd 1 1 1\nmap_Kd own.png\nmap_Ns /dev/zero\n"
                                     "map_Ks " +
                                         _top.path("outside/secret.png").toUtf8() + '\n');
        _top.write("model/maps.obj", "mtllib maps.mtl\n" + faces());
    }

    void link(const QString& target, const QString& name) const {
        EXPECT_TRUE(QFile::link(target, _top.path(name)));
    }
    static QByteArray faces() {
        return "v 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl a\nf 1 2 3\nusemtl b\nf 1 2 3\nusemtl c\nf 1 2 3\n";
    }
    QString path(const QString& name) const { return _top.path(name); }
    QString write(const QString& name, const QByteArray& text) const { return _top.write(name, text); }

    /// The files in the test's folders that a run opens, as real paths; includes files opened relative to an
    /// open folder.
    QStringList opened(const QStringList& arguments) const {
        const QString trace = _top.path("trace");
        QStringList command{"-f", "-qq", "-y", "-s", "4096", "-e", "trace=open,openat,openat2", "-o", trace};
        QProcess process;
        process.start("strace", command << VELMODEL_PROGRAM << arguments);
        EXPECT_TRUE(process.waitForFinished(-1));
        QFile file(trace);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
        QStringList result;
        const QRegularExpression success(R"( = \d+<(.*)>$)");
        for (const QByteArray& line : file.readAll().split('\n')) {
            const auto match = success.match(QString::fromLocal8Bit(line));
            if (match.hasMatch() && match.captured(1).startsWith(realTop()))
                result.append(match.captured(1).mid(realTop().size()));
        }
        return result;
    }
    bool canTrace() const {
        return !QStandardPaths::findExecutable("strace").isEmpty() &&
               QProcess::execute("strace", {"-qq", "-o", _top.path("trial"), "true"}) == 0;
    }

private:
    QString realTop() const { return QDir(_top.path("")).canonicalPath() + '/'; }

    TemporaryFolder _top;
};

// Every command that reads a model.
std::vector<QStringList> commands(const QString& model, const QString& picture) {
    return {{"info", model}, {"dump", model}, {"render", model, "-o", picture, "--resolution", "16,16"}};
}

} // namespace

TEST_F(ConfinedTest, NothingOutsideIsOpened) {
    if (!canTrace())
        GTEST_SKIP() << "strace is missing or may not trace";
    const QString picture = path("picture.png");
    for (const QStringList& command : commands(path("model/maps.obj"), picture)) {
        const QStringList files = opened(command + QStringList("--confined"));
        EXPECT_THAT(files, Contains(QString("model/maps.mtl"))) << "the trace shows the opened files";
        EXPECT_THAT(files.filter("outside"), IsEmpty()) << command.first().toStdString();
    }
    EXPECT_THAT(opened({"render", path("model/maps.obj"), "-o", picture}),
                Contains(QString("outside/secret.png")))
        << "without the option, the file is read";
    EXPECT_THAT(opened({"render", path("model/maps.obj"), "-o", picture, "--confined"}),
                Contains(QString("model/own.png")));
}

TEST_F(ConfinedTest, LibraryOutsideIsNotOpened) {
    if (!canTrace())
        GTEST_SKIP() << "strace is missing or may not trace";
    for (const QByteArray& library :
         {QByteArray("../outside/secret.mtl"), QByteArray("sub/folder/secret.mtl"), QByteArray("link.mtl"),
          path("outside/secret.mtl").toUtf8()}) {
        link("../outside/secret.mtl", "model/link.mtl");
        const QString model = write("model/library.obj", "mtllib " + library + '\n' + faces());
        EXPECT_THAT(opened({"info", "--confined", model}).filter("outside"), IsEmpty())
            << library.toStdString();
        EXPECT_THAT(opened({"info", model}), Contains(QString("outside/secret.mtl")))
            << library.toStdString();
        QFile::remove(path("model/link.mtl"));
    }
}

TEST_F(ConfinedTest, LibraryOutsideIsReportedAsAnError) {
    const QString model = write("model/library.obj", "mtllib ../outside/secret.mtl\n" + faces());
    const QString library = path("model/../outside/secret.mtl");
    for (const QStringList& command : commands(model, path("picture.png"))) {
        const ProgramResult result = runProgram(command + QStringList{"--exact", "--confined"});
        EXPECT_EQ(result.exitCode, 1) << command.first().toStdString();
        EXPECT_EQ(result.errors,
                  QString("velmodel: warning: '%1' is not read: it lies outside of the model's folder '%2'\n"
                          "velmodel: %3:1: '%1': lies outside of the model's folder\n")
                      .arg(library, path("model"), model));
    }
    EXPECT_FALSE(QFile::exists(path("picture.png")));
    EXPECT_EQ(runProgram({"info", model}).exitCode, 0);
}

TEST_F(ConfinedTest, LibraryOutsideIsLeftOutAfterAWarning) {
    const QString model = write("model/library.obj", "mtllib ../outside/secret.mtl\n" + faces());
    for (const QStringList& command : commands(model, path("picture.png"))) {
        const ProgramResult result = runProgram(command + QStringList("--confined"));
        EXPECT_EQ(result.exitCode, 0) << command.first().toStdString();
        EXPECT_EQ(result.errors.count("is not read: it lies outside of the model's folder"), 1);
        EXPECT_EQ(result.errors.count("lies outside of the model's folder; the library is left out"), 1);
    }
}

TEST_F(ConfinedTest, MapsOutsideAreReportedAndTheOthersAreDrawn) {
    const ProgramResult result = runProgram({"info", "--confined", path("model/maps.obj")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors.count("is not read: it lies outside of the model's folder"), 5);
    EXPECT_THAT(result.output.toStdString(), HasSubstr("model/own.png (2 x 2)"));
    EXPECT_FALSE(result.output.contains("secret.png (2 x 2)"));
    EXPECT_TRUE(runProgram({"info", path("model/maps.obj")}).output.contains("secret.png (2 x 2)"));
}

TEST_F(ConfinedTest, SamplesLieInTheirOwnFolders) {
    for (const char* sample : {"showpiece", "vase"}) {
        const QByteArray dump = runProgram({"dump", "--no-data", samplePath(sample)}).output;
        EXPECT_TRUE(dump.contains("\"drawables\"")) << sample;
        EXPECT_EQ(runProgram({"dump", "--no-data", "--confined", samplePath(sample)}).output, dump) << sample;
    }
}

} // namespace Atelier::Vel::Testing
