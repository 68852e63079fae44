// Loads that read nothing outside of the model's own folder.

#include <memory>

#include <unistd.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/texturemanager.h>
#include <velmodel/objloader.h>

#include "support/messagelog.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;
using Testing::RecordingContext;

constexpr LoadOptions kConfined{LoadOptions::Files::InOwnFolder};

const QByteArray kTriangle = "usemtl red\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";

/// A model in a folder of its own, with something beside that folder.
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
    QString load(const QByteArray& library, const LoadOptions& options = kConfined) {
        return loadFile(write("model/model.obj", "mtllib " + library + '\n' + kTriangle), options);
    }
    QString loadFile(const QString& file, const LoadOptions& options = kConfined) {
        const RecordingContext context;
        const MessageLog log;
        QString error;
        _model.reset(loadModelFromOBJFile(file, error, {}, nullptr, options));
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

TEST_F(ConfinementTest, LibraryOutsideFailsTheLoadAndAWarningSaysWhy) {
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

TEST_F(ConfinementTest, MapOutsideIsWhiteAndAWarningSaysWhy) {
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

// Whoever asks for a model by a link means what it leads to; names start from where the link lies.
TEST_F(ConfinementTest, ModelItselfMayBeALinkOutOfTheFolder) {
    write("out.obj", "mtllib in.mtl\n" + kTriangle);
    write("model/in.mtl", "newmtl red\n");
    link("../out.obj", "model/link.obj");
    EXPECT_EQ(loadFile(path("model/link.obj")), QString());
    EXPECT_THAT(warnings(), IsEmpty());
}

TEST_F(ConfinementTest, FolderOfARelativePathIsTheModelsToo) {
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

TEST_F(ConfinementTest, ResourcesAreAFolderLikeAnyOther) {
    for (const LoadOptions& options : {LoadOptions(), kConfined}) {
        EXPECT_EQ(loadFile(":/models/red.obj", options), QString());
        EXPECT_THAT(warnings(), IsEmpty());
        EXPECT_EQ(material().value("Kd").size(), 12);
    }
    EXPECT_EQ(load(":/blue.mtl", LoadOptions()), QString());
    EXPECT_EQ(load(":/blue.mtl"), QString("Failed to load MTL file ':/blue.mtl'"));
    EXPECT_THAT(warnings(), ElementsAre(outsideWarning(":/blue.mtl")));
}

TEST_F(ConfinementTest, SearchPathsLeadToTheFolderThatHoldsTheModel) {
    write("model/in.mtl", "newmtl red\n");
    write("model/model.obj", "mtllib in.mtl\n" + kTriangle);
    QDir::setSearchPaths("models", {path("model")});
    EXPECT_EQ(loadFile("models:model.obj"), QString());
    QDir::setSearchPaths("models", {});
}

} // namespace Atelier::Vel
