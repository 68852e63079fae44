#include "import/facegroups.h"

#include <gmock/gmock.h>

#include "mesh/mesh.h"
#include "support/streamcontents.h"

namespace Atelier::Vel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FaceGroupsTest : public testing::Test {
protected:
    void define(const QString& name) { _materials.define({name, name}, QStringLiteral("m.mtl"), {}, {}); }
    void use(const QString& name) { _groups.use({name.section(QLatin1Char(' '), 0, 0), name}); }
    std::vector<quint32> facesOf(const QString& group) const {
        std::vector<quint32> faces;
        _mesh.groups.find(group)->faces.forEach([&faces](const WordView& part) {
            faces.insert(faces.end(), part.words, part.words + part.count);
            return true;
        });
        return faces;
    }

    Mesh _mesh{Input::Consumed};
    LoadOptions _options;
    DiagnosticLog _log;
    MaterialDefinitions _materials{_mesh.groups, _options, _log};
    FaceGroups _groups{_mesh.groups, _materials, QStringLiteral("m.obj")};
};

} // namespace

TEST_F(FaceGroupsTest, FacesJoinTheDefaultGroupAtFirst) {
    EXPECT_FALSE(_groups.add(0, 1)) << "which the loader makes";
    define("<default>");
    EXPECT_TRUE(_groups.add(1, 2));
    EXPECT_THAT(facesOf("<default>"), ElementsAre(1, 2));
}

TEST_F(FaceGroupsTest, GroupMayBeDefinedAfterItsUse) {
    use("red");
    EXPECT_FALSE(_groups.add(0, 1));
    define("red");
    EXPECT_TRUE(_groups.add(1, 1));
    EXPECT_THAT(facesOf("red"), ElementsAre(1));
}

TEST_F(FaceGroupsTest, NameIsMatchedAgainAfterEachDefinition) {
    _options.repairs.matchNames = true;
    use("my red");
    define("my");
    EXPECT_TRUE(_groups.add(0, 1));
    define("my red");
    EXPECT_TRUE(_groups.add(1, 1));
    EXPECT_THAT(facesOf("my"), ElementsAre(0));
    EXPECT_THAT(facesOf("my red"), ElementsAre(1));
}

TEST_F(FaceGroupsTest, MissingGroupIsMadeByAFaceOnly) {
    _options.repairs.defineMaterials = true;
    use("a");
    use("b");
    EXPECT_TRUE(_groups.add(0, 1));
    EXPECT_FALSE(_mesh.groups.contains("a"));
    EXPECT_THAT(facesOf("b"), ElementsAre(0));
}

TEST_F(FaceGroupsTest, MatchIsReportedOncePerUse) {
    _options.repairs.matchNames = true;
    define("my red");
    use("my red");
    _groups.add(0, 1);
    _groups.add(1, 1);
    use("my red");
    LoadReport report;
    _log.copyTo(report);
    EXPECT_EQ(report.diagnosticCounts.value(LoadDiagnostic::Code::MatchedName), 1u)
        << "a use without faces is not reported";
}

} // namespace Atelier::Vel
