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
    void define(const QString& name) { _materials.define({name, name}, {}, {}); }
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
    FaceGroups _groups{_mesh.groups, _materials};
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

TEST_F(FaceGroupsTest, PartsAreIgnoredUnlessTheyAreSplit) {
    define("<default>");
    _groups.useObject("a");
    _groups.useGroup("b");
    EXPECT_TRUE(_groups.add(0, 1));
    _groups.finish();
    EXPECT_THAT(facesOf("<default>"), ElementsAre(0));
    EXPECT_EQ(_mesh.groups.records().size(), 1);
}

TEST_F(FaceGroupsTest, PartsWithFacesHaveGroups) {
    FaceGroups split(_mesh.groups, _materials, FaceGroups::Parts::Split);
    define("<default>");
    split.useObject("empty");
    split.useObject("a");
    EXPECT_TRUE(split.add(0, 2));
    split.useGroup("b");
    EXPECT_TRUE(split.add(2, 1));
    split.useGroup({});
    EXPECT_TRUE(split.add(3, 1));
    EXPECT_THAT(facesOf("<default>"), IsEmpty());
    EXPECT_THAT(facesOf("a\n<default>"), ElementsAre(0, 1, 3));
    EXPECT_THAT(facesOf("a/b\n<default>"), ElementsAre(2));
    EXPECT_EQ(_mesh.groups.records().size(), 3);
}

TEST_F(FaceGroupsTest, GroupsOfPartsHaveTheMaterialAtTheEnd) {
    _options.repairs.defineMaterials = true;
    FaceGroups split(_mesh.groups, _materials, FaceGroups::Parts::Split);
    split.useObject("a");
    split.use({"red", "red"});
    EXPECT_TRUE(split.add(0, 1));
    InstanceData red("OBJMaterial");
    red.setTexture("map_Kd", "red.png");
    _materials.define({"red", "red"}, red, {});
    split.finish();
    const MaterialGroup* const group = _mesh.groups.find("a\nred");
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(group->name, QStringLiteral("red"));
    EXPECT_EQ(group->objectName, QStringLiteral("a"));
    EXPECT_EQ(group->material.texturePath("map_Kd"), QStringLiteral("red.png"));
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
