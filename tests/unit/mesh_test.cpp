#include "mesh/mesh.h"

#include <vector>

#include <gmock/gmock.h>

#include "mesh/mergedcorners.h"
#include "support/streamcontents.h"

namespace Atelier::Vel {
namespace {

using Testing::elements;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned int kFloatType = 0x1406;
const QString kPosition = QStringLiteral("position");
const QString kNormal = QStringLiteral("normal");
const QString kGroup = QStringLiteral("group");

class MeshTest : public testing::TestWithParam<Input> {
protected:
    MeshTest() {
        for (const QString& name : {kPosition, kNormal})
            addAttribute(name);
    }

    void addAttribute(const QString& name) {
        const float values[12] = {};
        mesh.attributes.create(name, 3, kFloatType, 0, 0);
        mesh.attributes.addValues(name, 12, values, kFloatType);
    }
    void addCorners(std::vector<quint32> positions, std::vector<quint32> normals) {
        const CornerList lists[] = {{&kPosition, positions.data()}, {&kNormal, normals.data()}};
        mesh.attributes.addCorners(lists, 2, static_cast<quint32>(positions.size()));
    }
    std::vector<quint32> listed(const QString& name) {
        return elements<quint32>(mesh.attributes[name].streams[kIndices]);
    }
    std::vector<quint32> facesOf(const QString& group) {
        std::vector<quint32> faces;
        mesh.groups.find(group)->faces.forEach([&faces](const WordView& part) {
            faces.insert(faces.end(), part.words, part.words + part.count);
            return true;
        });
        return faces;
    }

public:
    Mesh mesh{GetParam()};
};

using ConsumedMeshTest = MeshTest;
INSTANTIATE_TEST_SUITE_P(Input, ConsumedMeshTest, testing::Values(Input::Consumed),
                         [](const auto& /*info*/) { return "Consumed"; });
INSTANTIATE_TEST_SUITE_P(Input, MeshTest, testing::Values(Input::Kept, Input::Consumed),
                         [](const auto& test) { return test.param == Input::Kept ? "Kept" : "Consumed"; });

} // namespace

TEST_P(MeshTest, FacesOfAGroupKeepTheirOrderHoweverTheyAreAdded) {
    mesh.groups.create(kGroup, InstanceData(), -1, 0);
    const unsigned int faces[] = {7, 8, 9, 2};
    EXPECT_TRUE(mesh.groups.addFaces(kGroup, 4, faces, QString()));
    EXPECT_TRUE(mesh.groups.addFaceRun(kGroup, 3, 2));
    EXPECT_TRUE(mesh.groups.addFaceRun(kGroup, 0, 1));
    EXPECT_THAT(facesOf(kGroup), ElementsAre(7, 8, 9, 2, 3, 4, 0));
    EXPECT_FALSE(mesh.groups.addFaceRun(kPosition, 0, 1)) << "there is no such group";
}

TEST_P(MeshTest, GroupOfAPartAdoptsTheMaterialThatItNames) {
    InstanceData material;
    material.setTexture(QStringLiteral("map_Kd"), QStringLiteral("a.png"));
    WhiteMaps white;
    white.set(QStringLiteral("map_Ks"), true);
    mesh.groups.create(kGroup, material, -1, 0, white);
    mesh.groups.createPart(QStringLiteral("key"), kGroup, QStringLiteral("part"), 7);
    mesh.groups.createPart(QStringLiteral("other"), QStringLiteral("none"), QString(), 8);
    EXPECT_TRUE(mesh.groups.addFaceRun(QStringLiteral("key"), 3, 2));
    mesh.groups.adoptMaterials();
    const MaterialGroup* const group = mesh.groups.find(QStringLiteral("key"));
    EXPECT_EQ(group->name, kGroup);
    EXPECT_EQ(group->objectName, QStringLiteral("part"));
    EXPECT_EQ(group->id, 7);
    EXPECT_EQ(group->material.texturePath(QStringLiteral("map_Kd")), QStringLiteral("a.png"));
    EXPECT_FALSE(group->whiteMaps.isEmpty());
    EXPECT_THAT(facesOf(QStringLiteral("key")), ElementsAre(3, 4));
    EXPECT_EQ(mesh.groups.find(kGroup)->name, kGroup);
    EXPECT_TRUE(mesh.groups.find(kGroup)->objectName.isNull());
}

TEST_P(MeshTest, CornersOfFacesOfDifferentSizesAreCounted) {
    const unsigned int triangles[] = {3, 3, 3};
    const unsigned int others[] = {3, 4, 0};
    mesh.faces.add(3, triangles);
    EXPECT_EQ(mesh.cornerCount(), 9U);
    mesh.faces.add(3, others);
    EXPECT_EQ(mesh.cornerCount(), 16U);
    EXPECT_EQ(mesh.faces.uniform().corners, 0U);
    EXPECT_THAT(elements<quint32>(mesh.faces.listed()), ElementsAre(3, 3, 3, 3, 4, 0));
}

TEST_P(MeshTest, FacesWithoutCornersAreListed) {
    const unsigned int none[] = {0, 0};
    mesh.faces.add(2, none);
    EXPECT_FALSE(mesh.faces.isEmpty());
    EXPECT_EQ(mesh.cornerCount(), 0U);
    EXPECT_THAT(elements<quint32>(mesh.faces.listed()), ElementsAre(0, 0));
}

TEST_P(MeshTest, MeshWithoutIndicesIsNotComplete) {
    const unsigned int corners = 3;
    mesh.groups.create(kGroup, InstanceData(), -1, 0);
    mesh.faces.add(1, &corners);
    EXPECT_FALSE(mesh.isComplete());
    addCorners({0, 1, 2}, {kNoIndex, kNoIndex, kNoIndex});
    EXPECT_TRUE(mesh.isComplete());
    addAttribute(QStringLiteral("late"));
    EXPECT_FALSE(mesh.isComplete());
}

// After merging has stopped, missing entries at the end of a list equal corners without a value.
TEST_P(MeshTest, CornersWithoutAValueAreListedWhenOneWithAValueFollows) {
    mesh.attributes.addIndices(kPosition, 0, nullptr); // from here on, corners are listed
    addCorners({0, 1, 2}, {kNoIndex, kNoIndex, kNoIndex});
    EXPECT_THAT(listed(kNormal), ElementsAre(kNoIndex));
    addCorners({1, 2}, {kNoIndex, kNoIndex});
    EXPECT_THAT(listed(kNormal), ElementsAre(kNoIndex));
    addCorners({3}, {2});
    EXPECT_THAT(listed(kNormal), ElementsAre(kNoIndex, kNoIndex, kNoIndex, kNoIndex, kNoIndex, 2));
    EXPECT_THAT(listed(kPosition), ElementsAre(0, 1, 2, 1, 2, 3));
    addCorners({3}, {kNoIndex});
    const unsigned int first = 0;
    mesh.attributes.addIndices(kNormal, 1, &first);
    EXPECT_THAT(listed(kNormal),
                ElementsAre(kNoIndex, kNoIndex, kNoIndex, kNoIndex, kNoIndex, 2, kNoIndex, 0));
}

TEST_P(MeshTest, CornersOfAnAttributeAreListedCompletely) {
    addCorners({0, 1, 0}, {2, kNoIndex, 2});
    addCorners({0, 2}, {kNoIndex, kNoIndex});
    const WordView normals = mesh.attributes.listCorners(kNormal, 7);
    EXPECT_EQ(mesh.attributes.mergedCorners(), nullptr);
    EXPECT_THAT(std::vector<quint32>(normals.words, normals.words + normals.count),
                ElementsAre(2, kNoIndex, 2, kNoIndex, kNoIndex, kNoIndex, kNoIndex));
    EXPECT_THAT(listed(kPosition), ElementsAre(0, 1, 0, 0, 2));
    EXPECT_EQ(mesh.attributes.listCorners(kPosition, 5).count, 5U);
    EXPECT_EQ(mesh.attributes.listCorners(kPosition, 2).count, 5U) << "a longer list is kept";
}

TEST_P(MeshTest, OmittedCornersAreListedBeforeLaterOnes) {
    mesh.attributes.addIndices(kPosition, 0, nullptr); // from here on, corners are listed
    mesh.attributes.omitCorners(kNormal, 2);
    addCorners({0, 1, 2}, {kNoIndex, 3, 1});
    EXPECT_THAT(listed(kNormal), ElementsAre(kNoIndex, kNoIndex, kNoIndex, 3, 1));
    EXPECT_THAT(listed(kPosition), ElementsAre(0, 1, 2));
}

TEST_P(MeshTest, IndicesAreBelowTheirLimitOnlyIfAllCornersHaveOne) {
    addCorners({0, 1, 0}, {2, 3, 2});
    EXPECT_TRUE(mesh.attributes.areIndicesBelow(kPosition, 3, 2));
    EXPECT_FALSE(mesh.attributes.areIndicesBelow(kPosition, 3, 1));
    EXPECT_TRUE(mesh.attributes.areIndicesBelow(kNormal, 3, 4));
    EXPECT_FALSE(mesh.attributes.areIndicesBelow(kNormal, 3, 3));
    mesh.attributes.addIndices(kPosition, 0, nullptr); // from here on, corners are listed
    EXPECT_TRUE(mesh.attributes.areIndicesBelow(kNormal, 3, 4));
    EXPECT_FALSE(mesh.attributes.areIndicesBelow(kNormal, 3, 3));
    addCorners({0, 0}, {kNoIndex, kNoIndex});
    EXPECT_FALSE(mesh.attributes.areIndicesBelow(kNormal, 5, 4)) << "omitted";
    EXPECT_TRUE(mesh.attributes.areIndicesBelow(kPosition, 5, 2));
}

TEST_P(ConsumedMeshTest, MergedCornersAreListedWhenAnAttributeComesLater) {
    addCorners({0, 1, 0}, {2, 3, 2});
    ASSERT_NE(mesh.attributes.mergedCorners(), nullptr);
    EXPECT_THAT(elements<quint32>(mesh.attributes.mergedCorners()->list()), ElementsAre(0, 1, 0));
    EXPECT_EQ(mesh.cornerCount(), 3U);
    addAttribute(QStringLiteral("late"));
    EXPECT_EQ(mesh.attributes.mergedCorners(), nullptr);
    EXPECT_THAT(listed(kPosition), ElementsAre(0, 1, 0));
    EXPECT_THAT(listed(kNormal), ElementsAre(2, 3, 2));
    addCorners({3}, {1});
    EXPECT_EQ(mesh.attributes.mergedCorners(), nullptr);
    EXPECT_THAT(listed(kPosition), ElementsAre(0, 1, 0, 3));
}

TEST_P(ConsumedMeshTest, ClearedMeshHasNoMergedCorners) {
    addCorners({0, 1, 2}, {0, 1, 2});
    ASSERT_NE(mesh.attributes.mergedCorners(), nullptr);
    mesh.clear();
    EXPECT_EQ(mesh.attributes.mergedCorners(), nullptr);
    EXPECT_EQ(mesh.cornerCount(), 0U);
}

TEST_P(ConsumedMeshTest, ClearedMeshMergesAndCountsAsANewOne) {
    const unsigned int counts[] = {3, 4};
    const unsigned int first = 0;
    mesh.groups.create(kGroup, InstanceData(), -1, 0);
    mesh.faces.add(2, counts);
    mesh.attributes.addIndices(kPosition, 1, &first);
    mesh.normalsAttribute = kNormal;
    mesh.generatedNormals = {true, true, true};
    mesh.streams.refuse(kGroup);
    mesh.clear();
    EXPECT_TRUE(mesh.groups.isEmpty() && mesh.faces.isEmpty() && mesh.attributes.isEmpty());
    EXPECT_TRUE(mesh.normalsAttribute.isNull());
    EXPECT_FALSE(mesh.generatedNormals.sharePositions || mesh.generatedNormals.outward ||
                 mesh.generatedNormals.onlyMissing);
    EXPECT_THAT(mesh.streams.refused(), IsEmpty());
    mesh.faces.add(1, counts);
    EXPECT_EQ(mesh.faces.uniform().corners, 3U);
    for (const QString& name : {kPosition, kNormal})
        addAttribute(name);
    addCorners({0, 1, 2}, {0, 1, 2});
    EXPECT_NE(mesh.attributes.mergedCorners(), nullptr);
}

} // namespace Atelier::Vel
