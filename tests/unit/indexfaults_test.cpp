#include "import/indexfaults.h"

#include <vector>

#include <gtest/gtest.h>

#include "glconstants.h"
#include "import/attributenames.h"
#include "mesh/mesh.h"

namespace Atelier::Vel {

namespace {

/// Triangles of a file with three values of each attribute.
class IndexFaultsTest : public testing::Test {
protected:
    IndexFaults faults(std::vector<quint32> positions, std::vector<quint32> normals,
                       std::vector<quint32> texCoords) {
        const auto corners = static_cast<quint32>(positions.size());
        const std::vector<quint32> triangles(corners / 3, 3);
        Mesh mesh(_input);
        mesh.faces.add(triangles.size(), triangles.data());
        const QString names[] = {positionAttribute(), normalAttribute(), texCoordAttribute()};
        for (const QString& name : names) {
            mesh.attributes.create(name, 1, kGlFloat, 0, 0);
            const float values[] = {1, 2, 3};
            mesh.attributes.addValues(name, 3, values, kGlFloat);
        }
        const CornerList lists[] = {
            {&names[0], positions.data()}, {&names[1], normals.data()}, {&names[2], texCoords.data()}};
        mesh.attributes.addCorners(lists, 3, corners);
        EXPECT_EQ(mesh.attributes.mergedCorners() != nullptr, _isMerged);
        return findIndexFaults(mesh);
    }

    Input _input = Input::Kept;
    bool _isMerged = false;
};

} // namespace

TEST_F(IndexFaultsTest, ExistingIndicesAreNone) {
    EXPECT_FALSE(faults({0, 1, 2}, {2, 1, 0}, {0, 0, 2}).any());
    EXPECT_FALSE(faults({0, 1, 2}, {kNoIndex, 1, 0}, {0, kNoIndex, 2}).any()) << "not all corners need one";
}

TEST_F(IndexFaultsTest, EachAttributeIsFound) {
    const IndexFaults position = faults({0, 3, 2}, {2, 1, 0}, {0, 0, 2});
    EXPECT_TRUE(position.positions && !position.normals && !position.texCoords);
    const IndexFaults none = faults({0, kNoIndex, 2}, {2, 1, 0}, {0, 0, 2});
    EXPECT_TRUE(none.positions);
    const IndexFaults normal = faults({0, 1, 2}, {kNoIndex, 1, 3}, {0, 0, 2});
    EXPECT_TRUE(!normal.positions && normal.normals && !normal.texCoords);
    const IndexFaults texCoord = faults({0, 1, 2}, {2, 1, 0}, {0xFFFFFFFF, 0, 2});
    EXPECT_TRUE(!texCoord.positions && !texCoord.normals && texCoord.texCoords);
}

TEST_F(IndexFaultsTest, MergedCornersHaveTheSame) {
    _input = Input::Consumed;
    _isMerged = true;
    EXPECT_FALSE(faults({0, 1, 2}, {kNoIndex, 1, 0}, {0, kNoIndex, 2}).any());
    const IndexFaults normal = faults({0, 1, 2}, {kNoIndex, 1, 3}, {0, 0, 2});
    EXPECT_TRUE(!normal.positions && normal.normals && !normal.texCoords);
    const IndexFaults texCoord = faults({0, 1, 2}, {2, 1, 0}, {3, 0, 2});
    EXPECT_TRUE(!texCoord.positions && !texCoord.normals && texCoord.texCoords);
}

TEST_F(IndexFaultsTest, FirstOfManyMergedCornersIsFound) {
    _input = Input::Consumed;
    _isMerged = true;
    std::vector<quint32> corners;
    for (quint32 i = 0; i < 30'000; ++i)
        corners.push_back(i % 3);
    std::vector<quint32> normals(corners.size(), 0);
    normals.front() = 3;
    EXPECT_TRUE(faults(corners, normals, corners).normals);
}

TEST_F(IndexFaultsTest, FileWithoutPositionsHasNone) {
    for (const Input input : {Input::Kept, Input::Consumed}) {
        Mesh mesh(input);
        const quint32 three = 3;
        mesh.faces.add(1, &three);
        const QString name = texCoordAttribute();
        mesh.attributes.create(name, 1, kGlFloat, 0, 0);
        const float values[] = {1, 2, 3};
        mesh.attributes.addValues(name, 3, values, kGlFloat);
        quint32 indices[] = {0, 1, 2};
        const CornerList list{&name, indices};
        mesh.attributes.addCorners(&list, 1, 3);
        EXPECT_EQ(mesh.attributes.mergedCorners() != nullptr, input == Input::Consumed);
        const IndexFaults faults = findIndexFaults(mesh);
        EXPECT_TRUE(faults.positions && !faults.normals && !faults.texCoords);
    }
}

} // namespace Atelier::Vel
