// Confined loads: they read nothing outside of the model's own folder.

#include <memory>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/texturemanager.h>
#include <velmodel/modelfiles.h>
#include <velmodel/objloader.h>
#include <velmodel/textureloader.h>

#include "support/messagelog.h"
#include "support/opendescriptors.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;
using Testing::openDescriptors;
using Testing::RecordingContext;

LoadOptions confined() {
    LoadOptions options;
    options.files = LoadOptions::Files::InOwnFolder;
    return options;
}

const QByteArray kTriangle = "usemtl red\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";

/// A model in its own folder, with files beside that folder.
class ConfinementTest : public testing::Test {
protected:
    ConfinementTest() { EXPECT_TRUE(QDir(_top.path()).mkpath("model/sub")); }

    QString path(const QString& name) const { return _top.path() + '/' + name; }
    QString write(const QString& name, const QByteArray& text) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        return file.fileName();
    }
    void link(const QString& target, const QString& name) const {
        EXPECT_EQ(symlink(qPrintable(target), qPrintable(path(name))), 0);
    }
    QString outsideWarning(const QString& file) const {
        return QString("'%1' is not read: it lies outside of the model's folder '%2'")
            .arg(file, path("model"));
    }

    /// Loads a model that names `library`. Returns: its error.
    QString load(const QByteArray& library, const LoadOptions& options = confined()) {
        return loadFile(write("model/model.obj", "mtllib " + library + '\n' + kTriangle), options);
    }
    QString loadFile(const QString& file, const LoadOptions& options = confined()) {
        const RecordingContext context;
        const MessageLog log;
        QString error;
        _model = loadModelFromOBJFile(file, error, options);
        _warnings = log.texts(QtWarningMsg);
        return error;
    }
    /// The material "red" of the model that was loaded last.
    InstanceData material() const { return _model->materials(0)->items().at(0); }
    const std::vector<QString>& warnings() const { return _warnings; }

private:
    QTemporaryDir _top;
    std::unique_ptr<GPUModel> _model;
    std::vector<QString> _warnings;
};

} // namespace

TEST_F(ConfinementTest, LibraryOutsideFailsTheLoadWithAWarning) {
    const QString outside = write("out.mtl", "newmtl red\n");
    link("../out.mtl", "model/link.mtl");
    const QString meant[] = {path("model/../out.mtl"), outside, path("model/link.mtl")};
    int next = 0;
    for (const QByteArray& name : {QByteArray("../out.mtl"), outside.toUtf8(), QByteArray("link.mtl")}) {
        const QString& library = meant[next++];
        EXPECT_EQ(load(name), QString("Failed to load MTL file '%1'").arg(library));
        EXPECT_THAT(warnings(), ElementsAre(outsideWarning(library)));
        EXPECT_EQ(load(name, LoadOptions()), QString()) << "the default reads it";
        EXPECT_THAT(warnings(), IsEmpty());
    }
}

TEST_F(ConfinementTest, MissingLibraryInsideFailsWithoutAWarning) {
    EXPECT_EQ(load("sub/no.mtl"), QString("Failed to load MTL file '%1'").arg(path("model/sub/no.mtl")));
    EXPECT_THAT(warnings(), IsEmpty());
}

TEST_F(ConfinementTest, LibraryInASubfolderIsRead) {
    write("model/sub/in.mtl", "newmtl red\nd 0.5\nmap_Kd ../skin.png\nmap_Ks sub.png\n");
    EXPECT_EQ(load("sub/in.mtl"), QString());
    EXPECT_THAT(warnings(), IsEmpty());
    EXPECT_EQ(material().texturePath("map_Kd"), path("model/sub/../skin.png"));
    EXPECT_EQ(material().texturePath("map_Ks"), path("model/sub/sub.png"));
}

TEST_F(ConfinementTest, MapOutsideIsWhiteWithAWarning) {
    link(path("out.png"), "model/link.png");
    write("model/in.mtl", "newmtl red\nmap_Kd ../out.png\nmap_Ks link.png\nmap_Ka /out.png\nmap_Ns in.png\n");
    EXPECT_EQ(load("in.mtl"), QString());
    EXPECT_THAT(warnings(), ElementsAre(outsideWarning(path("model/../out.png")),
                                        outsideWarning(path("model/link.png")), outsideWarning("/out.png")));
    Texture* white = TextureManager::Instance().colorTexture(Qt::white);
    for (const char* map : {"map_Kd", "map_Ks", "map_Ka"}) {
        EXPECT_TRUE(material().texturePath(map).isNull()) << map;
        EXPECT_EQ(material().texture(map), white) << map;
    }
    EXPECT_EQ(material().texturePath("map_Ns"), path("model/in.png"));
}

TEST_F(ConfinementTest, DefaultKeepsMapsAnywhere) {
    write("model/in.mtl", "newmtl red\nmap_Kd ../out.png\n");
    EXPECT_EQ(load("in.mtl", LoadOptions()), QString());
    EXPECT_THAT(warnings(), IsEmpty());
    EXPECT_EQ(material().texturePath("map_Kd"), path("model/../out.png"));
}

// A link to a model is followed; names in the model are relative to the folder of the link.
TEST_F(ConfinementTest, ModelItselfMayBeALinkOutOfTheFolder) {
    write("out.obj", "mtllib in.mtl\n" + kTriangle);
    write("model/in.mtl", "newmtl red\n");
    link("../out.obj", "model/link.obj");
    EXPECT_EQ(loadFile(path("model/link.obj")), QString());
    EXPECT_THAT(warnings(), IsEmpty());
}

TEST_F(ConfinementTest, RelativePathIsConfinedToTheModelsFolder) {
    write("model/in.mtl", "newmtl red\n");
    write("model/model.obj", "mtllib in.mtl\n" + kTriangle);
    write("model/hostile.obj", "mtllib ../out.mtl\n" + kTriangle);
    write("out.mtl", "newmtl red\n");
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(path("model")));
    EXPECT_EQ(loadFile("model.obj"), QString());
    EXPECT_EQ(loadFile("hostile.obj"), QString("Failed to load MTL file '%1'").arg(path("model/../out.mtl")));
    ASSERT_TRUE(QDir::setCurrent(before));
}

TEST_F(ConfinementTest, ResourcesAreConfinedLikeFolders) {
    for (const LoadOptions& options : {LoadOptions(), confined()}) {
        EXPECT_EQ(loadFile(":/models/red.obj", options), QString());
        EXPECT_THAT(warnings(), IsEmpty());
        EXPECT_EQ(material().value("Kd").size(), 12);
    }
    write("model/red.mtl", "newmtl red\n");
    EXPECT_EQ(load("red.mtl\nmtllib :/blue.mtl", LoadOptions()), QString());
    EXPECT_EQ(load(":/blue.mtl"), QString("Failed to load MTL file ':/blue.mtl'"));
    EXPECT_THAT(warnings(), ElementsAre(outsideWarning(":/blue.mtl")));
}

TEST_F(ConfinementTest, SearchPathsResolveToTheFolderOfTheModel) {
    write("model/in.mtl", "newmtl red\n");
    write("model/model.obj", "mtllib in.mtl\n" + kTriangle);
    QDir::setSearchPaths("models", {path("model")});
    EXPECT_EQ(loadFile("models:model.obj"), QString());
    QDir::setSearchPaths("models", {});
}

// Folders on the way to a file are opened one after the other.
TEST_F(ConfinementTest, SuccessfulLoadClosesItsDescriptors) {
    ASSERT_TRUE(QDir(path("model")).mkpath("a/b/c/d"));
    write("model/a/b/c/d/in.mtl", "newmtl red\nmap_Kd ../../x.png\nmap_Ks ../../../../../out.png\n");
    const QString outside = write("out.mtl", "newmtl red\n");
    link("a/b/c/d/in.mtl", "model/deep.mtl");
    link("loop", "model/loop");
    ASSERT_EQ(mkfifo(qPrintable(path("model/a/b/pipe")), 0600), 0);
    const auto failure = [this](const char* library) {
        return QString("Failed to load MTL file '%1'").arg(path("model/") + library);
    };
    const struct {
        QByteArray library;
        QString anywhere; ///< the error
        QString confined;
    } cases[] = {
        {"a/b/c/d/in.mtl", {}, {}},
        {"deep.mtl", {}, {}},
        {"../out.mtl", {}, failure("../out.mtl")},
        {"a/b/../../../out.mtl", {}, failure("a/b/../../../out.mtl")},
        {"a/b/c/d", failure("a/b/c/d"), failure("a/b/c/d")},
        {"a/b/c/d/no.mtl", failure("a/b/c/d/no.mtl"), failure("a/b/c/d/no.mtl")},
        {"a/b/no/d/in.mtl", failure("a/b/no/d/in.mtl"), failure("a/b/no/d/in.mtl")},
        {"a/b/c/d/in.mtl/x", failure("a/b/c/d/in.mtl/x"), failure("a/b/c/d/in.mtl/x")},
        {"a/b/pipe", failure("a/b/pipe"), failure("a/b/pipe")},
        {"loop", failure("loop"), failure("loop")},
    };
    const std::vector<int> before = openDescriptors();
    for (const auto& [library, anywhere, confined] : cases) {
        EXPECT_EQ(load(library, LoadOptions()), anywhere) << library.toStdString();
        EXPECT_EQ(openDescriptors(), before) << library.toStdString();
        EXPECT_EQ(load(library), confined) << library.toStdString();
        EXPECT_EQ(openDescriptors(), before) << library.toStdString();
    }
}

TEST_F(ConfinementTest, FailedLoadClosesItsDescriptors) {
    ASSERT_EQ(mkfifo(qPrintable(path("model/pipe.obj")), 0600), 0);
    write("model/good.obj", kTriangle);
    const std::vector<int> before = openDescriptors();
    for (const LoadOptions& options : {LoadOptions(), confined()}) {
        for (const char* name :
             {"model/no.obj", "no/no.obj", "model/sub", "model/pipe.obj", "model/good.obj/x"})
            EXPECT_EQ(loadFile(path(name), options), QString("Failed to load OBJ file '%1'").arg(path(name)));
        EXPECT_EQ(openDescriptors(), before);
        QString error;
        const RecordingContext context;
        const auto cancel = [](const LoadStep&) { return false; };
        EXPECT_EQ(loadModelFromOBJFile(path("model/good.obj"), error, options, cancel), nullptr);
        EXPECT_EQ(error, QString("Loading OBJ file '%1' was cancelled").arg(path("model/good.obj")));
        EXPECT_EQ(openDescriptors(), before);
    }
}

TEST_F(ConfinementTest, ImageClosesItsDescriptors) {
    ASSERT_TRUE(QDir(path("model")).mkpath("a/b/c"));
    ASSERT_TRUE(QImage(2, 3, QImage::Format_ARGB32).save(path("model/a/b/c/in.png")));
    ASSERT_TRUE(QImage(2, 3, QImage::Format_ARGB32).save(path("out.png")));
    write("model/a/b/text.png", "this is no picture");
    const ModelFiles folder(path("model"));
    const std::vector<int> before = openDescriptors();
    for (const ModelFiles& files : {ModelFiles(), folder})
        for (const char* name :
             {"model/a/b/c/in.png", "model/a/b/text.png", "model/a/b/no.png", "model/a/b/c"}) {
            const bool isImage = QByteArray(name) == "model/a/b/c/in.png";
            EXPECT_EQ(readTextureSize(files, path(name)), isImage ? QSize(2, 3) : QSize()) << name;
            EXPECT_EQ(openDescriptors(), before) << name;
        }
    EXPECT_EQ(readTextureSize(folder, path("out.png")), QSize());
    EXPECT_EQ(readTextureSize(ModelFiles(), path("out.png")), QSize(2, 3));
    EXPECT_EQ(openDescriptors(), before);
}

} // namespace Atelier::Vel
