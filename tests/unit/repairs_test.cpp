#include <velmodel/objloader.h>

#include <functional>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

#include "support/messagelog.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {

namespace {

using Code = LoadDiagnostic::Code;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;
using Testing::RecordingContext;

const QByteArray kPositions = "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 1\n";

using Repair = bool LoadRepairs::*;

LoadOptions with(std::initializer_list<Repair> repairs) {
    LoadOptions options;
    for (const Repair repair : repairs)
        options.repairs.*repair = true;
    return options;
}

template<typename T>
QByteArray bytesOf(const T* data, quint64 count) {
    return QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(count * sizeof(T)));
}

float redOf(const DrawData::Group& group) {
    float red = 0;
    const QByteArray kd = group.material.value(QStringLiteral("Kd"));
    std::copy_n(kd.constData(), std::min<std::size_t>(sizeof red, kd.size()), reinterpret_cast<char*>(&red));
    return red;
}

/// All bytes and groups of draw data.
QStringList contentOf(const DrawData& data) {
    QStringList content;
    for (const DrawData::Attribute& attribute : data.attributes())
        content.append(
            attribute.name + ' ' +
            QByteArray(static_cast<const char*>(attribute.data), static_cast<int>(attribute.bytes)).toHex());
    content.append(bytesOf(data.indices().data, data.indices().count).toHex());
    for (int i = 0; data.drawableCount() != 0 && i < data.commandCount(0); ++i) {
        const DrawData::Group group = data.group(0, i);
        const DrawElementsIndirectCommand& command = data.command(0, i);
        content.append(QStringLiteral("%1 %2: %3 from %4, %5")
                           .arg(group.id)
                           .arg(group.name)
                           .arg(command.count)
                           .arg(command.firstIndex)
                           .arg(double(redOf(group))));
    }
    return content;
}

class RepairsTest : public testing::Test {
protected:
    QString path(const QString& name) const { return _folder.filePath(name); }
    void write(const QString& name, const QByteArray& text) const {
        QDir().mkpath(QFileInfo(path(name)).path());
        QFile::remove(path(name));
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    DrawData read(const QByteArray& text, const LoadOptions& options) {
        write(QStringLiteral("model.obj"), text);
        _error.clear();
        _report = LoadReport();
        return readDrawDataFromOBJFile(path("model.obj"), _error, {}, &_report, options);
    }
    /// "name: count" of each command, the most red component behind it.
    QStringList groups(const QByteArray& text, const LoadOptions& options) {
        const DrawData data = read(text, options);
        QStringList result;
        for (int i = 0; data.drawableCount() != 0 && i < data.commandCount(0); ++i)
            result.append(QStringLiteral("%1: %2 %3")
                              .arg(data.group(0, i).name)
                              .arg(data.command(0, i).count)
                              .arg(double(redOf(data.group(0, i)))));
        return result;
    }
    quint64 count(Code code) const { return _report.diagnosticCounts.value(code); }
    QString message(int i = 0) const { return _report.diagnostics.value(i).message; }

    QString _error;
    LoadReport _report;

private:
    QTemporaryDir _folder;
};

} // namespace

// Without a library

TEST_F(RepairsTest, MissingLibraryIsLeftOut) {
    write("good.mtl", "newmtl red\nKd 1 0 0\n");
    const QByteArray text = "mtllib none.mtl\nmtllib good.mtl\n" + kPositions + "usemtl red\nf 1 2 3\n";
    EXPECT_THAT(groups(text, with({&LoadRepairs::skipMissingLibraries})), ElementsAre("red: 3 1"));
    EXPECT_TRUE(_error.isNull());
    ASSERT_EQ(_report.diagnostics.size(), 1);
    EXPECT_EQ(_report.diagnostics[0].code, Code::MissingLibrary);
    EXPECT_EQ(_report.diagnostics[0].file, path("model.obj"));
    EXPECT_EQ(_report.diagnostics[0].text, "none.mtl");
    EXPECT_EQ(message(), QString("'%1': no such file; the library is left out").arg(path("none.mtl")));
    EXPECT_THAT(groups(text, LoadOptions()), IsEmpty());
    EXPECT_EQ(_error, QString("Failed to load MTL file '%1'").arg(path("none.mtl")));
}

TEST_F(RepairsTest, UnreadableLibraryIsLeftOut) {
    const LoadOptions options = with({&LoadRepairs::skipMissingLibraries});
    for (const char* library : {"", "/", "/dev/null", "/proc/self/stat"}) {
        EXPECT_THAT(groups(QByteArray("mtllib ") + library + '\n' + kPositions + "f 1 2 3\n", options),
                    ElementsAre("<default>: 3 0.7"))
            << library;
        EXPECT_EQ(count(Code::MissingLibrary), 1u) << library;
    }
}

TEST_F(RepairsTest, LibraryOutsideOfAConfinedFolderIsLeftOutAfterAWarning) {
    LoadOptions options = with({&LoadRepairs::skipMissingLibraries});
    options.files = LoadOptions::Files::InOwnFolder;
    const MessageLog log;
    EXPECT_THAT(groups("mtllib /outside.mtl\n" + kPositions + "f 1 2 3\n", options),
                ElementsAre("<default>: 3 0.7"));
    EXPECT_EQ(log.texts(QtWarningMsg).size(), 1u);
}

TEST_F(RepairsTest, TenOfEachObservationAreKeptAndAllAreCounted) {
    QByteArray text = kPositions;
    for (int i = 0; i < 25; ++i)
        text += "mtllib " + QByteArray::number(i) + ".mtl\n";
    read(text + "usemtl red\nf 1 2 3\n", LoadOptions::forgiving());
    EXPECT_EQ(_report.diagnostics.size(), LoadReport::kMaxDiagnostics + 1);
    EXPECT_EQ(_report.diagnostics[9].text, "9.mtl");
    EXPECT_EQ(count(Code::MissingLibrary), 25u);
    EXPECT_EQ(count(Code::UndefinedMaterial), 1u);
    EXPECT_EQ(_report.diagnosticCounts.size(), 2);
}

// Without a definition

TEST_F(RepairsTest, UndefinedMaterialIsMadeAtItsFirstFace) {
    write("m.mtl", "newmtl red\nKd 1 0 0\n");
    const QByteArray text =
        "mtllib m.mtl\n" + kPositions +
        "usemtl z\nusemtl b\nf 1 2 3\nusemtl red\nf 1 2 4\nusemtl a\nf 1 3 4\nusemtl b\nf 2 3 4\n";
    const DrawData data = read(text, with({&LoadRepairs::defineMaterials}));
    ASSERT_EQ(data.commandCount(0), 3);
    EXPECT_EQ(data.group(0, 0).name, "red");
    EXPECT_EQ(data.group(0, 0).id, 1) << "the default group has the id 0";
    EXPECT_EQ(data.group(0, 1).name, "b");
    EXPECT_EQ(data.group(0, 1).id, 2);
    EXPECT_EQ(data.command(0, 1).count, 6u);
    EXPECT_EQ(data.group(0, 2).name, "a");
    EXPECT_EQ(data.group(0, 2).id, 3);
    for (const char* member : {"Kd", "Ks", "Ns", "d"})
        EXPECT_EQ(data.group(0, 1).material.value(member), makeDefaultMaterial().value(member)) << member;
    EXPECT_EQ(_report.facesWithoutGroup, 0u);
    EXPECT_EQ(count(Code::UndefinedMaterial), 2u) << "those without a face are not reported";
    EXPECT_EQ(message(), "No library has defined the material 'b': the default material is used");
    EXPECT_THAT(groups(text, LoadOptions()), ElementsAre("red: 3 1"));
    EXPECT_EQ(_report.facesWithoutGroup, 3u);
}

TEST_F(RepairsTest, UndefinedMaterialHasTheMapsOfTheDefaultMaterial) {
    const DrawData data = read(kPositions + "usemtl a\nf 1 2 3\n", LoadOptions::forgiving());
    const RecordingContext context;
    GPUModel model;
    ASSERT_TRUE(upload(data, model, {makeIdentityInstance()}));
    const InstanceData material = model.materials(0)->items().at(0);
    EXPECT_EQ(material.texture("map_Kd"), makeDefaultMaterial().texture("map_Kd"));
    EXPECT_NE(material.texture("map_Kd"), nullptr);
}

TEST_F(RepairsTest, LaterDefinitionReplacesTheMaterialInPlace) {
    write("m.mtl", "newmtl a\nKd 0.25 0 0\nnewmtl b\nKd 0.5 0 0\nnewmtl b\nKd 0.125 0 0\n");
    write("n.mtl", "newmtl b\nKd 0.75 0 0\n");
    const DrawData data =
        read(kPositions + "usemtl b\nf 1 2 3\nmtllib m.mtl\nf 1 2 4\nusemtl a\nf 1 3 4\nmtllib n.mtl\n",
             with({&LoadRepairs::defineMaterials}));
    ASSERT_EQ(data.commandCount(0), 2);
    EXPECT_EQ(data.group(0, 0).name, "b");
    EXPECT_EQ(data.group(0, 0).id, 1);
    EXPECT_EQ(data.command(0, 0).count, 6u);
    EXPECT_EQ(redOf(data.group(0, 0)), 0.5F) << "the first definition counts";
    EXPECT_EQ(data.group(0, 1).name, "a");
    EXPECT_EQ(data.group(0, 1).id, 2);
}

TEST_F(RepairsTest, UsemtlAloneGivesTheGroupWithoutAName) {
    for (const LoadOptions& options : {with({&LoadRepairs::defineMaterials}), LoadOptions::forgiving()})
        EXPECT_THAT(groups(kPositions + "usemtl\nf 1 2 3\n", options), ElementsAre(": 3 0.7"));
}

// Names

TEST_F(RepairsTest, NamesOfMaterialsAreMatched) {
    struct Row {
        const char* defined;
        const char* used;
        const char* group;
    };
    for (const Row& row : {Row{"my red", "my red", "my red"},
                           {"my red  ", " my red\t", "my red"},
                           {"red # bright", "red", "red"},
                           {"red", "red # bright", "red"},
                           {"red # bright", "red # dark", "red"},
                           {"red", "red bright", "red"},
                           {"my red", "my", "my red"},
                           {"Mat#1", "Mat#1", "Mat#1"},
                           {"#1", "#1", "#1"},
                           {"a #1", "a #1", "a"},
                           {"\"my red\"", "my red", "my red"},
                           {"my red", "\"my red\"", "my red"},
                           {"'red'", "red", "red"},
                           {"r\xC3\xA9"
                            "d",
                            "r\xC3\xA9"
                            "d",
                            "r\xC3\xA9"
                            "d"}}) {
        write("m.mtl", QByteArray("newmtl ") + row.defined + "\nKd 1 0 0\n");
        EXPECT_THAT(groups("mtllib m.mtl\n" + kPositions + "usemtl " + row.used + "\nf 1 2 3\n",
                           with({&LoadRepairs::matchNames})),
                    ElementsAre(QString::fromUtf8(row.group) + ": 3 1"))
            << row.defined << " used by " << row.used;
    }
}

TEST_F(RepairsTest, LongerNameIsPreferred) {
    write(
        "m.mtl",
        "newmtl my\nKd 0.25 0 0\nnewmtl my red\nKd 1 0 0\nnewmtl a #1\nKd 0.5 0 0\nnewmtl a #2\nKd 0.75 0 0\n"
        "newmtl Mat#1\nKd 0.125 0 0\nnewmtl Mat#2\nKd 0.375 0 0\n");
    EXPECT_THAT(
        groups("mtllib m.mtl\n" + kPositions +
                   "usemtl my red\nf 1 2 3\nusemtl my\nf 1 2 4\nusemtl a #2\nf 1 3 4\nusemtl a #1\nf 2 3 4\n"
                   "usemtl Mat#2\nf 1 2 3\nusemtl Mat#1\nf 1 2 3\n",
               with({&LoadRepairs::matchNames})),
        ElementsAre("my: 3 0.25", "my red: 3 1", "a: 3 0.5", "a #2: 3 0.75", "Mat#1: 3 0.125",
                    "Mat#2: 3 0.375"));
}

TEST_F(RepairsTest, DefinitionThatComesLaterIsMatchedToo) {
    write("m.mtl", "newmtl my red\nKd 1 0 0\n");
    const QByteArray text = kPositions + "usemtl my red # x\nf 1 2 3\nmtllib m.mtl\nf 1 2 4\n";
    EXPECT_THAT(groups(text, with({&LoadRepairs::matchNames})), ElementsAre("my red: 3 1"))
        << "the first face has no group";
    EXPECT_THAT(groups(text, LoadOptions::forgiving()), ElementsAre("my red: 6 1"));
}

TEST_F(RepairsTest, MatchedNamesAreReported) {
    write("m.mtl", "newmtl my red\nnewmtl Mat#1\nnewmtl green\n");
    read("mtllib m.mtl\n" + kPositions + "usemtl green # x\nf 1 2 3\nusemtl my red\nf 1 2 3\nf 1 2 4\n",
         with({&LoadRepairs::matchNames}));
    EXPECT_EQ(count(Code::MatchedName), 3u);
    EXPECT_EQ(_report.diagnostics[0].file, path("m.mtl"));
    EXPECT_EQ(message(0), "'my red' is read as the name 'my red', and not as 'my'");
    EXPECT_EQ(message(1), "'Mat#1' is read as the name 'Mat#1', and not as 'Mat'");
    EXPECT_EQ(_report.diagnostics[2].file, path("model.obj"));
}

TEST_F(RepairsTest, LineMayNameSeveralLibrariesOrOneWithSpaces) {
    write("a.mtl", "newmtl a\nKd 0.25 0 0\n");
    write("b.mtl", "newmtl b\nKd 0.5 0 0\n");
    write("a.mtl b.mtl", "newmtl a\nKd 0.75 0 0\n");
    write("my lib.mtl", "newmtl a\nKd 1 0 0\n");
    const QByteArray faces = '\n' + kPositions + "usemtl a\nf 1 2 3\nusemtl b\nf 1 2 4\n";
    const LoadOptions options = with({&LoadRepairs::matchNames});
    EXPECT_THAT(groups("mtllib a.mtl b.mtl" + faces, options), ElementsAre("a: 3 0.75"));
    EXPECT_THAT(groups("mtllib b.mtl   a.mtl # x" + faces, options), ElementsAre("b: 3 0.5", "a: 3 0.25"));
    EXPECT_THAT(groups("mtllib 'a.mtl' \"b.mtl\"" + faces, options), ElementsAre("a: 3 0.25", "b: 3 0.5"));
    EXPECT_THAT(groups("mtllib my lib.mtl" + faces, options), ElementsAre("a: 3 1"));
    EXPECT_THAT(groups("mtllib my lib.mtl # x" + faces, options), ElementsAre("a: 3 1"));
    EXPECT_THAT(groups("mtllib \"my lib.mtl\"" + faces, options), ElementsAre("a: 3 1"));
    EXPECT_THAT(groups("mtllib a.mtl none.mtl" + faces, options), IsEmpty());
    EXPECT_EQ(_error, QString("Failed to load MTL file '%1'").arg(path("none.mtl")));
    EXPECT_THAT(groups("mtllib a.mtl none.mtl b.mtl" + faces,
                       with({&LoadRepairs::matchNames, &LoadRepairs::skipMissingLibraries})),
                ElementsAre("a: 3 0.25", "b: 3 0.5"));
    EXPECT_EQ(count(Code::MissingLibrary), 1u);
    EXPECT_EQ(_report.diagnostics.value(0).text, "none.mtl");
    groups("mtllib none one.mtl # x" + faces,
           with({&LoadRepairs::matchNames, &LoadRepairs::skipMissingLibraries}));
    EXPECT_EQ(count(Code::MissingLibrary), 1u) << "where nothing is there, one name is meant";
    EXPECT_EQ(_report.diagnostics.value(0).text, "none one.mtl");
}

TEST_F(RepairsTest, FacesBeforeALibraryDoNotJoinItsMaterials) {
    write("my lib.mtl", "newmtl red\nKd 1 0 0\n");
    EXPECT_THAT(groups(kPositions + "usemtl red\nf 1 2 3\nmtllib my lib.mtl\nf 1 2 4\n",
                       with({&LoadRepairs::matchNames})),
                ElementsAre("red: 3 1"));
    EXPECT_EQ(_report.facesWithoutGroup, 1u);
}

// Maps

TEST_F(RepairsTest, OptionsOfMapsAreSkipped) {
    const auto map = [this](const QByteArray& line, const LoadOptions& options) {
        write("m.mtl", "newmtl red\nmap_Kd " + line + '\n');
        const DrawData data = read("mtllib m.mtl\n" + kPositions + "usemtl red\nf 1 2 3\n", options);
        return data.group(0, 0).material.texturePath("map_Kd");
    };
    const LoadOptions options = with({&LoadRepairs::parseMapOptions});
    EXPECT_EQ(map("-s 2 2 1 -clamp on wood.png", options), path("wood.png"));
    EXPECT_EQ(_report.diagnostics.value(0).code, Code::MapName);
    EXPECT_EQ(message(), QString("'-s 2 2 1 -clamp on wood.png' names the file '%1'").arg(path("wood.png")));
    EXPECT_EQ(map("wood.png", options), path("wood.png"));
    EXPECT_EQ(_report.diagnostics.size(), 0);
    EXPECT_EQ(map("-bm 1 my wood.png", options), path("my wood.png"));
    EXPECT_EQ(map("-bm 1 wood#1.png", options), path("wood")) << "the comment is another repair";
    EXPECT_EQ(map("-bm 1 wood#1.png # x", LoadOptions::forgiving()), path("wood#1.png"));
    EXPECT_EQ(map("-bm 1 \"my wood.png\"", LoadOptions::forgiving()), path("my wood.png"));
    EXPECT_EQ(map("#1.png", LoadOptions::forgiving()), path("#1.png"));
    EXPECT_EQ(map("-bm 1 wood.png", with({&LoadRepairs::matchNames})), path("-bm"));
    EXPECT_EQ(map("-bm 1 wood.png", LoadOptions()), path("-bm"));
}

TEST_F(RepairsTest, MapsAreFoundWithoutOtherRepairs) {
    write("m.mtl", "newmtl red\nmap_Kd TEX\\Wood.PNG # x\n");
    write("tex/wood.png", "");
    const DrawData data =
        read("mtllib m.mtl\n" + kPositions + "usemtl red\nf 1 2 3\n", with({&LoadRepairs::findFiles}));
    EXPECT_EQ(data.group(0, 0).material.texturePath("map_Kd"), path("tex/wood.png"));
}

TEST_F(RepairsTest, NameOfAMapWithSpacesIsTheOneThatExists) {
    const auto map = [this](const QByteArray& line) {
        write("m.mtl", "newmtl red\nmap_Kd " + line + '\n');
        const DrawData data =
            read("mtllib m.mtl\n" + kPositions + "usemtl red\nf 1 2 3\n", LoadOptions::forgiving());
        return data.group(0, 0).material.texturePath("map_Kd");
    };
    write("a b #1.png", "");
    write("a b.png", "");
    write("c.png", "");
    EXPECT_EQ(map("a b #1.png"), path("a b #1.png"));
    EXPECT_EQ(map("a b.png #1"), path("a b.png"));
    EXPECT_EQ(map("c.png and more"), path("c.png"));
    EXPECT_EQ(map("-s 1 1 1 a b.png"), path("a b.png"));
    EXPECT_EQ(map("none and more # x"), path("none and more")) << "the name as it is read without files";
}

// Lines

TEST_F(RepairsTest, ContinuedLinesOfBothFilesAreJoined) {
    write("m.mtl", "newmtl \\\nred\nKd 1 \\\r\n 0 0\n");
    const QByteArray text = "mtllib \\\n m.mtl\n" + kPositions + "usemtl red\nf 1 2 \\\n 3\nf 1 \\\n2\\\n4\n";
    EXPECT_THAT(groups(text, with({&LoadRepairs::joinContinuedLines})), ElementsAre("red: 6 1"));
    EXPECT_EQ(_report.droppedFaces, 0u);
}

TEST_F(RepairsTest, ContinuationOfAVertexLineIsNoLineOfItsOwn) {
    const LoadOptions options = with({&LoadRepairs::joinContinuedLines});
    const DrawData data = read(kPositions + "v 5 5 5 \\\nf 1 2 3\nf 1 2 4\n", options);
    EXPECT_EQ(data.indices().count, 3u);
    EXPECT_EQ(contentOf(data), contentOf(read(kPositions + "v 5 5 5\nf 1 2 4\n", options)));
    const QByteArray twice = "v 5 5 5 \\\nf 1 2 3\nf 1 2 4\n";
    EXPECT_EQ(contentOf(read(kPositions + twice + twice, options)),
              contentOf(read(kPositions + "v 5 5 5\nf 1 2 4\nv 5 5 5\nf 1 2 4\n", options)));
}

// Faces

TEST_F(RepairsTest, FacesWithoutAPositionAreDropped) {
    const LoadOptions options = with({&LoadRepairs::dropUnplacedFaces, &LoadRepairs::defineMaterials});
    const QByteArray start = "vt 0 0\nvt 1 1\n" + kPositions;
    struct Row {
        const char* broken;
        const char* repaired;
        quint64 dropped;
    };
    for (const Row& row : {Row{"f 1 2 9\nf 1 2 3\n", "f 1 2 3\n", 1},
                           {"f 1 2 3\nf 1 2 0\n", "f 1 2 3\n", 1},
                           {"f 1 2 3\nf 1 2 -9\nf 2 3 4\n", "f 1 2 3\nf 2 3 4\n", 1},
                           {"f 1 2 3 4\nf 1 2 5\nf 2 3 4\n", "f 1 2 3 4\nf 2 3 4\n", 1},
                           {"f 1/1 2/2 5/1\nf 1/1 2/2 3/1\nf 2 3 4\n", "f 1/1 2/2 3/1\nf 2 3 4\n", 1},
                           {"f 1/1 2/2 3/1\nf 2 3 9\nf 4/2 2/1 1/1\n", "f 1/1 2/2 3/1\nf 4/2 2/1 1/1\n", 1},
                           {"usemtl a\nf 1 2 3\nusemtl b\nf 1 2 9\nusemtl c\nf 2 3 4\nf 9 9 9\n",
                            "usemtl a\nf 1 2 3\nusemtl c\nf 2 3 4\n", 2},
                           {"usemtl a\nf 1 2 3\nf 1 2 9\nusemtl c\nf 2 3 4\nusemtl a\nf 8 8 8\nf 2 3 1\n",
                            "usemtl a\nf 1 2 3\nusemtl c\nf 2 3 4\nusemtl a\nf 2 3 1\n", 2},
                           {"f 1 2 5\nv 2 2 2\nf 1 2 3\n", "f 1 2 5\nv 2 2 2\nf 1 2 3\n", 0}}) {
        QStringList expected = contentOf(read(start + row.repaired, options));
        const quint64 faces = _report.faces;
        QStringList found = contentOf(read(start + row.broken, options));
        // Groups without faces count for the ids.
        expected.replaceInStrings(QRegExp("^\\d+ "), QString());
        found.replaceInStrings(QRegExp("^\\d+ "), QString());
        EXPECT_EQ(found, expected) << row.broken;
        EXPECT_EQ(_report.droppedFaces, row.dropped) << row.broken;
        EXPECT_EQ(_report.faces, faces) << row.broken;
        EXPECT_EQ(count(Code::UnplacedFace), row.dropped) << row.broken;
    }
    EXPECT_EQ(message(), QString());
    read(start + "f 1 2 9\nf 1 2 3\n", options);
    EXPECT_EQ(message(), "Position '9' does not exist, and the face is dropped");
}

TEST_F(RepairsTest, SmoothingGroupsStayWithTheirFacesWhereOthersAreDropped) {
    LoadOptions options = with({&LoadRepairs::dropUnplacedFaces});
    options.normals = NormalOptions::smoothingGroups();
    const QByteArray faces = "f 1 2 3\ns 2\nf 1 2 4\ns 3\nf 1 3 4\nf 2 3 4\n";
    for (const char* start : {"s 1\n", "s 1\ns 2\n", "s 3\n"})
        EXPECT_EQ(contentOf(read(kPositions + start + "f 1 2 9\n" + faces, options)),
                  contentOf(read(kPositions + start + faces, options)))
            << start;
}

TEST_F(RepairsTest, FacesOfATextWithoutPositionsAreDropped) {
    EXPECT_TRUE(read("f -3 -2 -1\nf 1 2 3\n", LoadOptions::forgiving()).isEmpty());
    EXPECT_EQ(_report.droppedFaces, 2u);
    EXPECT_EQ(count(Code::UnplacedFace), 2u);
}

TEST_F(RepairsTest, NothingIsLeftWhereNoFaceHasPositions) {
    const DrawData data = read(kPositions + "f 7 8 9\n", with({&LoadRepairs::dropUnplacedFaces}));
    EXPECT_TRUE(data.isEmpty());
    EXPECT_TRUE(_error.isNull());
    EXPECT_EQ(_report.droppedFaces, 1u);
}

TEST_F(RepairsTest, TextureCoordinateThatDoesNotExistIsZeroAsEver) {
    const QByteArray text = "vt 1 1\n" + kPositions + "f 1/1 2/1 3/7\n";
    EXPECT_EQ(contentOf(read(text, LoadOptions::forgiving())), contentOf(read(text, LoadOptions())));
}

// Extended materials

TEST_F(RepairsTest, FirstUploadOfExtendedMaterialsRegistersTheirLayout) {
    const InstanceDataRegistry& registry = InstanceDataRegistry::Instance();
    const QString name = QStringLiteral("OBJMaterialExtended");
    LoadOptions options;
    options.extendedMaterials = true;
    write("m.mtl", "newmtl red\nKd 1 0 0\n");
    const DrawData data = read("mtllib m.mtl\n" + kPositions + "f 1 2 3\nusemtl red\nf 1 2 4\n", options);
    const DrawData plain = read("mtllib m.mtl\n" + kPositions + "f 1 2 3\n", LoadOptions());
    EXPECT_EQ(data.group(0, 0).material.name(), name) << "the default material";
    EXPECT_EQ(data.group(0, 1).material.name(), name);
    EXPECT_EQ(plain.group(0, 0).material.name(), "OBJMaterial");
    const RecordingContext context;
    GPUModel model;
    ASSERT_TRUE(upload(plain, model, {makeIdentityInstance()}));
    EXPECT_EQ(registry.plan(name), nullptr);
    const MessageLog log;
    for (int i = 0; i < 2; ++i)
        ASSERT_TRUE(upload(data, model, {makeIdentityInstance()}));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
    ASSERT_NE(registry.plan(name), nullptr);
    QStringList members;
    for (const InstanceDataPlan::Member& member : registry.plan(name)->members())
        members.append(member.name);
    EXPECT_EQ(members.mid(0, 9),
              QStringList({"Ns", "d", "Kd", "Ks", "Ke", "map_Ns", "map_Kd", "map_Ks", "map_Ke"}))
        << "those of the plain layout";
    EXPECT_EQ(members.mid(9),
              QStringList({"illum", "Pr", "Pm", "map_offset", "map_scale", "map_Pr", "map_Pm", "norm"}));
    EXPECT_FALSE(registry.plan(name)->pack(model.materials(1)->items()).isEmpty());
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty()) << "no value has another size than its member";
}

TEST_F(RepairsTest, UndefinedMaterialIsExtendedToo) {
    LoadOptions options = LoadOptions::forgiving();
    options.extendedMaterials = true;
    const DrawData data = read(kPositions + "usemtl a\nf 1 2 3\n", options);
    EXPECT_EQ(data.group(0, 0).material.name(), "OBJMaterialExtended");
    EXPECT_TRUE(data.group(0, 0).material.hasValue("map_scale"));
}

// Functions with options

TEST_F(RepairsTest, LoadWithOptionsNeedsAContext) {
    write("model.obj", kPositions + "f 1 2 3\n");
    QString error;
    EXPECT_EQ(loadModelFromOBJFile(path("model.obj"), error, LoadOptions()), nullptr);
    EXPECT_EQ(error,
              QString("OBJ file '%1' needs a current context of OpenGL 4.3 or later").arg(path("model.obj")));
    const RecordingContext context;
    error.clear();
    EXPECT_NE(loadModelFromOBJFile(path("model.obj"), error, LoadOptions()), nullptr);
    EXPECT_TRUE(error.isNull());
}

TEST_F(RepairsTest, LoadWithOptionsOfNothingGivesNoModel) {
    const RecordingContext context;
    for (const QByteArray& text : {QByteArray(), QByteArray("\x89PNG\r\n\x1A\n"), kPositions,
                                   kPositions + "f 1 2\n", kPositions + "usemtl none\nf 1 2 3\n"}) {
        write("model.obj", text);
        QString error;
        EXPECT_EQ(loadModelFromOBJFile(path("model.obj"), error, LoadOptions()), nullptr);
        EXPECT_EQ(error, QString("OBJ file '%1' has nothing that can be drawn").arg(path("model.obj")));
        EXPECT_TRUE(readDrawDataFromOBJFile(path("model.obj"), error).isEmpty());
        const std::unique_ptr<GPUModel> plain(loadModelFromOBJFile(path("model.obj"), error));
        EXPECT_NE(plain, nullptr);
    }
}

} // namespace Atelier::Vel
