// The output of `velmodel check`. These tests need no OpenGL.

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>

#include <gmock/gmock.h>

#include "program.h"
#include "temporarymodel.h"
#include "terminal.h"

namespace Atelier::Vel::Testing {

namespace {

const QByteArray kSound = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0 0 1\nf 1//1 2//1 3//1\n";
// An error, a warning and notes.
const QByteArray kFaulty = kSound + "\tf 1//1 2//1 \x1b[7//1\nx\ns 1\ns 2\n";
const QByteArray kOnlyNotes = kSound + "s 1\n";

class CheckCommandTest : public testing::Test {
public:
    ProgramResult check(const QStringList& arguments, const ProgramSurroundings& surroundings = {}) const {
        return runProgram(QStringList{"check"} + arguments, surroundings);
    }
    QString text(const QByteArray& model) const {
        return QString::fromUtf8(check({folder.write("m.obj", model)}).output).remove(folder.path("") + "/");
    }
    QJsonObject json(const QStringList& arguments) const {
        return QJsonDocument::fromJson(check(QStringList{"--json"} + arguments).output).object();
    }

    TemporaryFolder folder;
};

TEST_F(CheckCommandTest, SoundFileSaysThatNothingIsFound) {
    EXPECT_EQ(text(kSound), "m.obj: nothing found\n");
}

TEST_F(CheckCommandTest, FindingsAreGroupedWithTheirLines) {
    EXPECT_EQ(text(kFaulty).toStdString(),
              "m.obj: 1 error, 1 warning, 2 notes\n"
              "errors\n"
              "  m.obj:6:14: The corner '\\x1b[7//1' is not made of integers with slashes between them: the "
              "face is "
              "dropped [face-malformed]\n"
              "            f 1//1 2//1 \\x1b[7//1\n"
              "                        ^\n"
              "warnings\n"
              "  m.obj:7:1: 'x' is not a keyword: 1 line is skipped [keyword-unknown]\n"
              "    x\n"
              "    ^\n"
              "notes\n"
              "  m.obj:8:1: 's' (smoothing groups) has no effect: 2 lines are skipped [keyword-skipped]\n"
              "    s 1\n"
              "    ^\n");
}

TEST_F(CheckCommandTest, FurtherFindingsAreCounted) {
    const QString output = text(kSound + QByteArray("vn 0 0 2\n").repeated(13));
    EXPECT_EQ(output.count("[normal-not-unit]"), 11);
    EXPECT_TRUE(output.endsWith("  and 3 more [normal-not-unit]\n")) << output.toStdString();
    EXPECT_TRUE(output.startsWith("m.obj: 13 notes\n")) << output.toStdString();
}

TEST_F(CheckCommandTest, WhatWasNotExaminedIsNamed) {
    folder.write("a.pgm", "P5\n16384 1025\n255\n");
    folder.write("m.mtl", "newmtl m\nmap_Kd a.pgm\n");
    const QString output = text("mtllib m.mtl\nusemtl m\nvt 0 0\n" + QByteArray(kSound).replace("//", "/1/"));
    EXPECT_EQ(output, "m.obj: nothing found\nnot examined\n  The pixels of 'a.pgm', because it is large\n");
}

TEST_F(CheckCommandTest, ExitCodePrefersLoadingToFindings) {
    const QString sound = folder.write("sound.obj", kSound);
    const QString notes = folder.write("notes.obj", kOnlyNotes);
    const QString faulty = folder.write("faulty.obj", kFaulty);
    const QString empty = folder.write("empty.obj", "v 0 0 0\n");
    EXPECT_EQ(check({sound, faulty}).exitCode, 0);
    EXPECT_EQ(check({"--strict", sound, notes}).exitCode, 0);
    EXPECT_EQ(check({"--strict", sound, faulty}).exitCode, 5);
    EXPECT_EQ(check({"--strict", faulty, empty, sound}).exitCode, 1);
    EXPECT_EQ(check({empty, sound}).exitCode, 1);
    EXPECT_EQ(check({folder.path("none.obj"), sound}).exitCode, 1);
    EXPECT_EQ(check({"--strict", "--json", faulty}).exitCode, 5);
}

TEST_F(CheckCommandTest, MissingFileIsAFindingAmongTheOthers) {
    const ProgramResult result = check({folder.path("none.obj"), folder.write("m.obj", kSound)});
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(
        QString::fromUtf8(result.output).remove(folder.path("") + "/").toStdString(),
        "none.obj: 1 error\nerrors\n  none.obj: No such file [file-unreadable]\n\nm.obj: nothing found\n");
}

TEST_F(CheckCommandTest, UsageIsExplained) {
    EXPECT_EQ(check({}).exitCode, 2);
    EXPECT_EQ(check({}).errors, "velmodel: A file is missing. Try 'velmodel check --help'.\n");
    EXPECT_EQ(check({"--exact", "m.obj"}).exitCode, 2);
    EXPECT_TRUE(check({"--help"}).output.contains("--strict"));
}

TEST_F(CheckCommandTest, OutputThatCannotBeWrittenIsAnError) {
    ProgramSurroundings surroundings;
    surroundings.outputFile = "/dev/full";
    EXPECT_EQ(check({folder.write("m.obj", kSound)}, surroundings).exitCode, 4);
}

TEST_F(CheckCommandTest, JsonHasAVersionAndAnEntryPerFile) {
    const QString sound = folder.write("sound.obj", kSound);
    const QString faulty = folder.write("faulty.obj", kFaulty);
    const QJsonObject output = json({sound, faulty});
    EXPECT_EQ(output["version"], 1);
    const QJsonArray files = output["files"].toArray();
    ASSERT_EQ(files.size(), 2);
    EXPECT_EQ(files[0].toObject(), (QJsonObject{{"file", sound},
                                                {"loadable", true},
                                                {"triangles", 1},
                                                {"counts", QJsonObject()},
                                                {"findings", QJsonArray()},
                                                {"notExamined", QJsonArray()}}));
    EXPECT_EQ(files[1]["counts"].toObject(),
              (QJsonObject{{"face-malformed", 1}, {"keyword-unknown", 1}, {"keyword-skipped", 2}}));
    EXPECT_EQ(files[1]["findings"][1].toObject(),
              (QJsonObject{{"code", "keyword-unknown"},
                           {"severity", "warning"},
                           {"file", faulty},
                           {"line", 7},
                           {"column", 1},
                           {"text", "x"},
                           {"message", "'x' is not a keyword: 1 line is skipped"},
                           {"lineText", "x"},
                           {"lineTextColumn", 1},
                           {"outline", QJsonArray()}}));
}

TEST_F(CheckCommandTest, JsonFollowsItsSchema) {
    const QString square =
        folder.write("square.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\nv nan 0 0\nvn 0 0 1\n"
                                   "f 1//1 2//1 3//1 4//1\nf 1//1 5//1\n");
    const QString faulty = folder.write("faulty.obj", kFaulty);
    QFile output(folder.path("output.json"));
    ASSERT_TRUE(output.open(QIODevice::WriteOnly));
    output.write(check({"--json", square, faulty, folder.path("none.obj")}).output);
    output.close();
    const QJsonValue files = json({square})["files"];
    EXPECT_EQ(files[0]["findings"][0]["outline"].toArray().size(), 2);
    QProcess validator;
    validator.start(VELMODEL_PYTHON, {VELMODEL_SOURCE_DIR "/tests/tool/validate.py",
                                      VELMODEL_SOURCE_DIR "/docs/check.schema.json", output.fileName()});
    ASSERT_TRUE(validator.waitForFinished());
    EXPECT_EQ(validator.exitCode(), 0)
        << validator.readAllStandardOutput().toStdString() << validator.readAllStandardError().toStdString();
}

TEST_F(CheckCommandTest, SchemaValidatorFindsFaults) {
    QProcess validator;
    validator.start(VELMODEL_PYTHON, {VELMODEL_SOURCE_DIR "/tests/tool/validate.py", "--self-test"});
    ASSERT_TRUE(validator.waitForFinished());
    EXPECT_EQ(validator.exitCode(), 0) << validator.readAllStandardOutput().toStdString();
}

TEST_F(CheckCommandTest, TerminalShowsColoursUnlessTheUserWantsNone) {
    const QString file = folder.write("m.obj", kFaulty);
    Terminal terminal;
    ProgramSurroundings surroundings;
    surroundings.environment.remove("NO_COLOR");
    surroundings.environment.insert("TERM", "xterm");
    surroundings.outputFile = terminal.name();
    check({file}, surroundings);
    EXPECT_TRUE(terminal.text().contains("\x1b[1;31merrors\x1b[0m"));
    surroundings.environment.insert("NO_COLOR", "1");
    check({file}, surroundings);
    const QByteArray plain = terminal.text();
    EXPECT_TRUE(plain.contains("errors"));
    EXPECT_FALSE(plain.contains('\x1b'));
    surroundings.environment.remove("NO_COLOR");
    surroundings.environment.insert("TERM", "dumb");
    check({file}, surroundings);
    EXPECT_FALSE(terminal.text().contains('\x1b'));
}

TEST_F(CheckCommandTest, ConfinedFileReadsNothingOutside) {
    const TemporaryFolder other;
    const QString library = other.write("m.mtl", "newmtl m\nKd 1 1 1\n");
    const QString file = folder.write("m.obj", "mtllib " + library.toUtf8() + "\nusemtl m\n" + kSound);
    EXPECT_EQ(check({file}).output, file.toUtf8() + ": nothing found\n");
    EXPECT_TRUE(check({"--confined", file}).output.contains("[library-missing]"));
}

} // namespace

} // namespace Atelier::Vel::Testing
