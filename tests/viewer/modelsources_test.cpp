#include "modelsources.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velmodel/objloader.h>

namespace Atelier::Vel::Viewer::Testing {

TEST(ModelSourcesTest, AreTheFileItsLibrariesAndItsTextures) {
    const QTemporaryDir folder;
    const auto path = [&](const char* name) { return folder.filePath(name); };
    const auto write = [&](const char* name, const QByteArray& text) {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    };
    QDir(folder.path()).mkdir("sub");
    write("sub/named.mtl", "newmtl a\nmap_Kd maps\\a.png\n");
    write("a.obj",
          "mtllib sub\\named.mtl\nmtllib lib/gone.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl a\nf 1 2 3\n");
    QString error;
    LoadReport report;
    readDrawDataFromOBJFile(path("a.obj"), error, {}, &report, LoadOptions::forgiving());
    EXPECT_THAT(sourcesOf(path("a.obj"), report),
                ::testing::UnorderedElementsAre(path("a.obj"), path("sub/named.mtl"), path("lib/gone.mtl"),
                                                path("gone.mtl"), path("sub/maps/a.png"), path("sub/a.png"),
                                                path("maps/a.png"), path("a.png")));
}

TEST(ModelSourcesTest, AFileThatIsGoneIsItsOnlySource) {
    EXPECT_THAT(sourcesOf("/no/such.obj", LoadReport()), ::testing::ElementsAre(QString("/no/such.obj")));
}

} // namespace Atelier::Vel::Viewer::Testing
