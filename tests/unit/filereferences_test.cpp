// The libraries and textures that a load finds by other paths than those in its files.

#include "import/references/filereferences.h"

#include <vector>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velmodel/objloader.h>

#include "askedpaths.h"
#include "support/messagelog.h"

namespace Atelier::Vel {

namespace {

using Testing::AskedPaths;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;

using Code = LoadDiagnostic::Code;

/// A model that names a library, which names a texture for the material "red".
class FileReferencesTest : public testing::Test {
protected:
    FileReferencesTest() { _options.repairs.findFiles = true; }

    QString path(const QString& name) const { return _top.path() + '/' + name; }
    QString write(const QString& name, const QByteArray& text = "x") const {
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path(name)).path()));
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        return file.fileName();
    }
    /// Loads model/model.obj. Returns: the error.
    QString load(const QByteArray& library) {
        const QString model = write("model/model.obj", "mtllib " + library +
                                                           "\nusemtl red\nv 0 0 0\nv 1 0 0\nv 0 1 0\n"
                                                           "f 1 2 3\n");
        const MessageLog log;
        QString error;
        _report = {};
        _data = readDrawDataFromOBJFile(model, error, {}, &_report, _options);
        _warnings = log.texts(QtWarningMsg);
        return error;
    }
    /// The path of the texture, relative to the top.
    QString texture() const {
        const QString found = _data.group(0, 0).material.texturePath("map_Kd");
        return found.startsWith(path(QString())) ? found.mid(path(QString()).size()) : found;
    }
    QStringList messages() const {
        QStringList texts;
        for (const LoadDiagnostic& diagnostic : _report.diagnostics)
            texts.append(diagnostic.message);
        return texts;
    }
    LoadOptions& options() { return _options; }
    const LoadReport& report() const { return _report; }
    /// The files of the report as "PATH" or "PATH < TRIED TRIED", relative to the folder of the model.
    QStringList files() const {
        QStringList texts;
        for (const ReferencedFile& file : _report.files) {
            QString text = file.path;
            if (!file.tried.isEmpty())
                text += " < " + file.tried.join(' ');
            texts.append(text.remove(path("model/")));
        }
        return texts;
    }
    const std::vector<QString>& warnings() const { return _warnings; }

private:
    QTemporaryDir _top;
    LoadOptions _options;
    LoadReport _report;
    DrawData _data;
    std::vector<QString> _warnings;
};

} // namespace

TEST_F(FileReferencesTest, MapBecomesTheFoundPath) {
    write("model/tex/wood.png");
    const QString library = write("model/in.mtl", "newmtl red\nmap_Kd tex\\wood.png\n");
    EXPECT_EQ(load("in.mtl"), QString());
    EXPECT_EQ(texture(), "model/tex/wood.png");
    ASSERT_EQ(report().diagnostics.size(), 1);
    const LoadDiagnostic& found = report().diagnostics.first();
    EXPECT_EQ(found.code, Code::RelocatedTexture);
    EXPECT_EQ(found.file, library);
    EXPECT_EQ(found.text, "tex\\wood.png");
    EXPECT_EQ(found.message, "'tex\\wood.png': no such file; 'tex/wood.png' is used");
    EXPECT_EQ(report().diagnosticCounts.value(Code::RelocatedTexture), 1u);
}

TEST_F(FileReferencesTest, LibraryIsFound) {
    write("model/Lib/In.mtl", "newmtl red\nmap_Kd wood.png\n");
    write("model/Lib/wood.png");
    EXPECT_EQ(load("D:\\models\\lib\\in.MTL"), QString());
    EXPECT_EQ(texture(), "model/Lib/wood.png") << "relative to the library that was found";
    ASSERT_EQ(report().diagnostics.size(), 1);
    const LoadDiagnostic& found = report().diagnostics.first();
    EXPECT_EQ(found.code, Code::RelocatedLibrary);
    EXPECT_EQ(found.file, path("model/model.obj"));
    EXPECT_EQ(found.text, "D:\\models\\lib\\in.MTL");
    EXPECT_EQ(found.message, "'D:\\models\\lib\\in.MTL': no such file; 'Lib/In.mtl' is used");
}

TEST_F(FileReferencesTest, TextureIsFoundBesideTheLibraryThenTheModelThenInSearchPaths) {
    options().searchPaths = QStringList{path("search")};
    const QString library = write("model/sub/in.mtl", "newmtl red\nmap_Kd /home/me/Wood.png\n");
    const auto message = [](const QString& used) {
        return QString("'/home/me/Wood.png': no such file; '%1' is used").arg(used);
    };
    write("search/wood.png");
    EXPECT_EQ(load("sub/in.mtl"), QString());
    EXPECT_EQ(texture(), "search/wood.png");
    EXPECT_EQ(messages(), QStringList(message(path("search/wood.png"))));
    write("model/wood.png");
    EXPECT_EQ(load("sub/in.mtl"), QString());
    EXPECT_EQ(texture(), "model/wood.png");
    EXPECT_EQ(messages(), QStringList(message(path("model/wood.png"))));
    write("model/sub/wood.png");
    EXPECT_EQ(load("sub/in.mtl"), QString());
    EXPECT_EQ(texture(), "model/sub/wood.png");
    EXPECT_EQ(messages(), QStringList(message("wood.png")));
}

TEST_F(FileReferencesTest, SearchPathsAreOptions) {
    write("maps/Wood.png");
    write("model/in.mtl", "newmtl red\nmap_Kd wood.png\n");
    EXPECT_EQ(load("in.mtl"), QString());
    const QString path = this->path("model/model.obj");
    const QStringList searchPaths(this->path("maps"));
    QString error;
    LoadReport report;
    LoadOptions options;
    options.repairs.findFiles = true;
    options.searchPaths = searchPaths;
    const DrawData data = readDrawDataFromOBJFile(path, error, {}, &report, options);
    EXPECT_EQ(data.group(0, 0).material.texturePath("map_Kd"), this->path("maps/Wood.png"));
    EXPECT_EQ(report.diagnosticCounts.value(Code::RelocatedTexture), 1u);
}

TEST_F(FileReferencesTest, FilesThatExistAreNotReported) {
    write("model/in.mtl", "newmtl red\nmap_Kd ./wood.png\n");
    write("model/wood.png");
    EXPECT_EQ(load("./in.mtl"), QString());
    EXPECT_EQ(texture(), "model/./wood.png");
    EXPECT_THAT(report().diagnostics, IsEmpty());
}

TEST_F(FileReferencesTest, PathsStayIfNothingIsFound) {
    write("model/in.mtl", "newmtl red\nmap_Kd C:\\tex\\wood.png\n");
    EXPECT_EQ(load("in.mtl"), QString());
    EXPECT_EQ(texture(), "model/C:\\tex\\wood.png");
    EXPECT_EQ(load("lib\\no.mtl"), QString("Failed to load MTL file '%1'").arg(path("model/lib\\no.mtl")));
    options().repairs.skipMissingLibraries = true;
    EXPECT_EQ(load("lib\\no.mtl"), QString());
    ASSERT_EQ(report().diagnostics.size(), 2);
    EXPECT_EQ(report().diagnostics[0].code, Code::MissingLibrary);
    EXPECT_EQ(report().diagnostics[1].code, Code::UndrawnFace);
}

TEST_F(FileReferencesTest, ReportListsLibrariesAndTexturesAndWhereTheyWereLookedFor) {
    options() = LoadOptions::forgiving();
    write("model/in.mtl",
          "newmtl red\nmap_Kd Wood.png\nmap_Ks a\\gone.png\nmap_Ka Wood.png\nmap_Ns wood.png\n");
    write("model/wood.png");
    EXPECT_EQ(load("in.mtl"), QString());
    EXPECT_THAT(files(), ElementsAre("wood.png", "a\\gone.png < a\\gone.png a/gone.png gone.png", "in.mtl"));
    EXPECT_EQ(report().files[1].kind, ReferencedFile::Kind::Texture);
    EXPECT_EQ(report().files[2].kind, ReferencedFile::Kind::Library);
    EXPECT_EQ(load("x/no.mtl"), QString());
    EXPECT_THAT(files(), ElementsAre("x/no.mtl < x/no.mtl no.mtl"));
}

TEST_F(FileReferencesTest, PlainLoadsListFilesAsNamed) {
    options() = LoadOptions();
    write("model/in.mtl", "newmtl red\nmap_Kd Wood.png\n");
    EXPECT_EQ(load("in.mtl"), QString());
    EXPECT_THAT(files(), ElementsAre("Wood.png", "in.mtl"));
    EXPECT_FALSE(load("no.mtl").isNull());
    EXPECT_THAT(files(), ElementsAre("no.mtl < no.mtl"));
}

TEST_F(FileReferencesTest, ListsOfFilesAreBounded) {
    options() = LoadOptions::forgiving();
    QByteArray library = "newmtl red\n";
    for (int i = 0; i <= LoadReport::kMaxFiles; ++i)
        library += "map_Kd a/b/" + QByteArray::number(i) + "\n";
    write("model/in.mtl", library);
    EXPECT_EQ(load("in.mtl"), QString());
    ASSERT_EQ(report().files.size(), LoadReport::kMaxFiles);
    EXPECT_EQ(report().files[99].tried.size(), 3);
    EXPECT_EQ(report().files[100].tried, QStringList(path("model/a/b/100")));
    write("model/in.mtl", "newmtl red\nmap_Ks " + QByteArray("long/").repeated(20) + "name\n");
    EXPECT_EQ(load("in.mtl"), QString());
    EXPECT_EQ(report().files[0].tried.size(), 16);
}

TEST_F(FileReferencesTest, PathsStayIfFilesAreNotToBeFound) {
    options() = LoadOptions();
    options().searchPaths = QStringList{path("model")};
    write("model/in.mtl", "newmtl red\nmap_Kd Wood.png\n");
    write("model/wood.png");
    EXPECT_EQ(load("In.mtl"), QString("Failed to load MTL file '%1'").arg(path("model/In.mtl")));
    const AskedPaths asked;
    EXPECT_EQ(load("in.mtl"), QString());
    EXPECT_EQ(texture(), "model/Wood.png");
    EXPECT_EQ(asked.listings(path("model")), 0);
    EXPECT_THAT(report().diagnostics, IsEmpty());
}

TEST_F(FileReferencesTest, ForgivingOptionsFindFiles) {
    options() = LoadOptions::forgiving();
    write("model/in.mtl", "newmtl red\nmap_Kd Wood.png\n");
    write("model/wood.png");
    EXPECT_EQ(load("In.mtl"), QString());
    EXPECT_EQ(texture(), "model/wood.png");
    EXPECT_EQ(messages(), QStringList({"'In.mtl': no such file; 'in.mtl' is used",
                                       "'Wood.png': no such file; 'wood.png' is used"}));
}

TEST_F(FileReferencesTest, FolderIsListedOnceForAllReferencesOfALoad) {
    QByteArray materials;
    for (int i = 0; i < 30; ++i)
        materials += "newmtl red" + QByteArray::number(i) + "\nmap_Kd A.png\nmap_Ks B.png\n";
    write("model/in.mtl", materials + "newmtl red\nmap_Kd No.png\n");
    write("model/a.png");
    write("model/b.png");
    const AskedPaths asked;
    EXPECT_EQ(load("IN.mtl"), QString());
    EXPECT_EQ(asked.listings(path("model")), 1);
    EXPECT_EQ(report().diagnosticCounts.value(Code::RelocatedTexture), 60u);
}

TEST_F(FileReferencesTest, ConfinedLoadFindsOnlyFilesOfItsFolder) {
    options().files = LoadOptions::Files::InOwnFolder;
    options().searchPaths = QStringList{path("search")};
    write("search/wood.png");
    write("wood.png");
    write("out.mtl", "newmtl red\n");
    write("model/in.mtl", "newmtl red\nmap_Kd ../wood.png\n");
    const AskedPaths asked;
    EXPECT_EQ(load("in.mtl"), QString());
    EXPECT_TRUE(texture().isNull()) << "white";
    EXPECT_THAT(warnings(),
                ElementsAre(QString("'%1' is not read: it lies outside of the model's folder '%2'")
                                .arg(path("model/../wood.png"), path("model"))));
    EXPECT_EQ(load("../out.mtl"), QString("Failed to load MTL file '%1'").arg(path("model/../out.mtl")));
    write("model/maps/out.mtl", "newmtl red\nmap_Kd Wood.png\n");
    write("model/Wood.PNG");
    EXPECT_EQ(load("..\\Maps\\out.mtl"), QString());
    EXPECT_EQ(texture(), "model/Wood.PNG");
    EXPECT_THAT(warnings(), IsEmpty());
    for (const QString& place : asked.below(path(QString())))
        EXPECT_TRUE((place + '/').startsWith(path("model/"))) << place.toStdString();
}

} // namespace Atelier::Vel
