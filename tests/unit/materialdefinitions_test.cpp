#include "import/mtl/materialdefinitions.h"

#include <gmock/gmock.h>

#include "mesh/mesh.h"

namespace Atelier::Vel {

namespace {

class MaterialDefinitionsTest : public testing::Test {
protected:
    static InstanceData material(float red) {
        InstanceData data(QStringLiteral("OBJMaterial"));
        data.set(QStringLiteral("Kd"), &red, sizeof red);
        return data;
    }
    void define(const QString& rest, float red) {
        const QString word = rest.section(QLatin1Char(' '), 0, 0);
        _definitions.define({word, rest}, material(red), {});
    }
    QString groupOf(const QString& rest) const {
        return _definitions.groupOf({rest.section(QLatin1Char(' '), 0, 0), rest});
    }
    bool defineMissing(const QString& name) { return _definitions.defineMissing({name, name}); }
    bool hasRed(const QString& group, float red) const {
        const MaterialGroup* const found = _mesh.groups.find(group);
        return found != nullptr &&
               found->material.value(QStringLiteral("Kd")) == material(red).value(QStringLiteral("Kd"));
    }

    Mesh _mesh{Input::Consumed};
    LoadOptions _options;
    DiagnosticLog _log;
    MaterialDefinitions _definitions{_mesh.groups, _options, _log};
};

} // namespace

TEST_F(MaterialDefinitionsTest, FirstDefinitionCounts) {
    define("red", 1);
    define("red", 2);
    EXPECT_TRUE(hasRed("red", 1));
    EXPECT_EQ(_mesh.groups.find("red")->id, 0);
}

TEST_F(MaterialDefinitionsTest, NameIsTheFirstWordWithoutRepairs) {
    define("my red", 1);
    define("my blue", 2);
    EXPECT_TRUE(hasRed("my", 1));
    EXPECT_EQ(groupOf("my green"), "my");
    EXPECT_FALSE(defineMissing("x"));
    EXPECT_FALSE(_mesh.groups.contains("x"));
}

TEST_F(MaterialDefinitionsTest, MissingOneIsReplacedOnceInPlace) {
    _options.repairs.defineMaterials = true;
    EXPECT_TRUE(defineMissing("x"));
    define("y", 2);
    const int id = _mesh.groups.find("x")->id;
    define("x", 1);
    define("x", 3);
    EXPECT_TRUE(hasRed("x", 1));
    EXPECT_EQ(_mesh.groups.find("x")->id, id);
}

TEST_F(MaterialDefinitionsTest, RevisionChangesWithEachNewName) {
    _options.repairs.defineMaterials = true;
    const quint64 first = _definitions.revision();
    define("red", 1);
    const quint64 second = _definitions.revision();
    EXPECT_NE(second, first);
    define("red", 1);
    EXPECT_EQ(_definitions.revision(), second);
    defineMissing("x");
    EXPECT_NE(_definitions.revision(), second);
}

TEST_F(MaterialDefinitionsTest, WholeNameComesBeforeTheOthers) {
    _options.repairs.matchNames = true;
    define("my red # 1", 1);
    define("my red # 2", 2);
    define("my", 3);
    EXPECT_EQ(groupOf("my red # 1"), "my red");
    EXPECT_EQ(groupOf("my red # 2"), "my red # 2");
    EXPECT_EQ(groupOf("my red # 3"), "my red");
    EXPECT_EQ(groupOf("my blue"), "my");
    EXPECT_EQ(groupOf("your blue # 1"), "your blue") << "the name of a group to come";
    EXPECT_TRUE(hasRed("my red", 1));
    EXPECT_TRUE(hasRed("my red # 2", 2));
    EXPECT_TRUE(hasRed("my", 3));
}

TEST_F(MaterialDefinitionsTest, SameLineTwiceIsOneMaterial) {
    _options.repairs.matchNames = true;
    for (const char* name : {"a #1", "a #2", "a #1", "a #2"})
        define(name, 1);
    EXPECT_EQ(_mesh.groups.records().size(), 2);
}

} // namespace Atelier::Vel
