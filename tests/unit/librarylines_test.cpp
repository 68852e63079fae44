#include "import/librarylines.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velmodel/modelfiles.h>

#include "files/filesource.h"
#include "import/mtl/materialdefinitions.h"
#include "import/mtl/materials.h"
#include "import/references/filereferences.h"
#include "mesh/mesh.h"

namespace Atelier::Vel {

namespace {

/// A model with the libraries "a.mtl" and "b c.mtl", which define "a" and "c".
class LibraryLinesTest : public testing::Test {
protected:
    LibraryLinesTest() {
        write("a.mtl", "newmtl a\n");
        write("b c.mtl", "newmtl c\n");
    }
    QString path(const QString& name) const { return _folder.filePath(name); }
    void write(const QString& name, const QByteArray& text) const {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }
    bool has(const QString& material) const { return _mesh.groups.contains(material); }

    QTemporaryDir _folder;
    Mesh _mesh{Input::Consumed};
    LoadOptions _options;
    DiagnosticLog _log;
    FileSource _source{ModelFiles()};
    FileReferences _references{_source, path("m.obj"), _options, _log};
    MaterialDefinitions _definitions{_mesh.groups, _options, _log};
    MaterialLibraries _libraries{_source, _references, _options, _definitions, _log};
    LibraryLines _lines{_libraries, _references, _options.repairs, _log};
    TextLine _line{path("m.obj")};
    QString _error;
};

} // namespace

TEST_F(LibraryLinesTest, WordNamesALibraryBesideTheText) {
    EXPECT_TRUE(_lines.load(_line, "a.mtl", _error));
    EXPECT_TRUE(has("a"));
    EXPECT_TRUE(_error.isNull());
}

TEST_F(LibraryLinesTest, LibraryThatIsNeededIsNamedByTheError) {
    EXPECT_FALSE(_lines.load(_line, "x.mtl", _error));
    EXPECT_EQ(_error, QString("Failed to load MTL file '%1'").arg(path("x.mtl")));
    _options.repairs.skipMissingLibraries = true;
    _error.clear();
    EXPECT_TRUE(_lines.load(_line, "x.mtl", _error));
    EXPECT_TRUE(_error.isNull());
}

TEST_F(LibraryLinesTest, RestOfALineNamesOneLibraryOrSeveral) {
    EXPECT_TRUE(_lines.loadMatching(_line, "b c.mtl # a.mtl", _error));
    EXPECT_TRUE(has("c"));
    EXPECT_FALSE(has("a"));
    EXPECT_FALSE(_lines.loadMatching(_line, "a.mtl x.mtl", _error));
    EXPECT_TRUE(has("a"));
    EXPECT_EQ(_error, QString("Failed to load MTL file '%1'").arg(path("x.mtl")));
}

} // namespace Atelier::Vel
