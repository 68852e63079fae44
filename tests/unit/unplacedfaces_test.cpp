#include "mesh/unplacedfaces.h"

#include <gmock/gmock.h>

#include "glconstants.h"
#include "mesh/mesh.h"
#include "support/streamcontents.h"

namespace Atelier::Vel {

namespace {

using Testing::elements;
using testing::ElementsAre;

const QString kPosition = QStringLiteral("va_Vertex");
const QString kNormal = QStringLiteral("va_Normal");

/// A mesh with `positions` positions, and corners that are not merged.
class UnplacedFacesTest : public testing::Test {
protected:
    void positions(quint64 count) {
        _mesh.attributes.create(kPosition, 3, kGlFloat, 0, 0);
        const std::vector<float> values(3 * count);
        _mesh.attributes.addValues(kPosition, values.size(), values.data(), kGlFloat);
        _mesh.groups.create(QStringLiteral("a"), {}, -1, 0);
    }
    void face(std::initializer_list<quint32> corners, const char* group = "a") {
        const std::vector<quint32> indices(corners);
        const auto count = static_cast<quint32>(indices.size());
        _mesh.attributes.addIndices(kPosition, count, indices.data());
        _mesh.faces.add(1, &count);
        _mesh.groups.addFaceRun(QString::fromLatin1(group), _faces++, 1);
    }
    std::vector<quint32> indices(const QString& attribute) {
        return elements<quint32>(_mesh.attributes[attribute].streams[kIndices]);
    }
    std::vector<quint32> facesOf(const char* group) const {
        std::vector<quint32> faces;
        _mesh.groups.find(QString::fromLatin1(group))->faces.forEach([&faces](const WordView& part) {
            faces.insert(faces.end(), part.words, part.words + part.count);
            return true;
        });
        return faces;
    }

    Mesh _mesh{Input::Consumed};
    quint32 _faces = 0;
};

} // namespace

TEST_F(UnplacedFacesTest, GoWithTheirCornersAndNumbers) {
    positions(4);
    _mesh.groups.create(QStringLiteral("b"), {}, -1, 0);
    face({0, 1, 4});
    face({0, 1, 2, 3}, "b");
    face({kNoIndex, 1, 2});
    face({1, 2, 3});
    EXPECT_THAT(removeUnplacedFaces(_mesh, kPosition), ElementsAre(0, 2));
    EXPECT_THAT(indices(kPosition), ElementsAre(0, 1, 2, 3, 1, 2, 3));
    EXPECT_THAT(elements<quint32>(_mesh.faces.listed()), ElementsAre(4, 3));
    EXPECT_THAT(facesOf("a"), ElementsAre(1));
    EXPECT_THAT(facesOf("b"), ElementsAre(0));
}

TEST_F(UnplacedFacesTest, NothingChangesWithoutThem) {
    positions(3);
    face({0, 1, 2});
    face({2, 1, 0});
    EXPECT_EQ(removeUnplacedFaces(_mesh, kPosition).size(), 0u);
    EXPECT_THAT(indices(kPosition), ElementsAre(0, 1, 2, 2, 1, 0));
    EXPECT_EQ(_mesh.faces.uniform().count, 2u);
}

TEST_F(UnplacedFacesTest, ShorterListLosesTheSameCorners) {
    positions(3);
    _mesh.attributes.create(kNormal, 3, kGlFloat, 0, 0);
    const quint32 normals[] = {7, 8, 9, 5};
    _mesh.attributes.addIndices(kNormal, 4, normals);
    face({0, 1, 3});
    face({0, 1, 2});
    face({0, 1, 2});
    EXPECT_EQ(removeUnplacedFaces(_mesh, kPosition).size(), 1u);
    EXPECT_THAT(indices(kNormal), ElementsAre(5));
}

TEST_F(UnplacedFacesTest, SharedListLosesItsCornersOnce) {
    positions(3);
    _mesh.attributes.createAlongside(QStringLiteral("va_Color"), 3, kGlFloat, kPosition);
    face({0, 1, 3});
    face({2, 1, 0});
    face({1, 2, 0});
    EXPECT_EQ(removeUnplacedFaces(_mesh, kPosition).size(), 1u);
    EXPECT_THAT(indices(kPosition), ElementsAre(2, 1, 0, 1, 2, 0));
}

TEST_F(UnplacedFacesTest, ListThatLosesAllKeepsOneEntry) {
    positions(3);
    _mesh.attributes.create(kNormal, 3, kGlFloat, 0, 0);
    const quint32 normal = 7;
    _mesh.attributes.addIndices(kNormal, 1, &normal);
    face({0, 1, 3});
    face({0, 1, 2});
    EXPECT_EQ(removeUnplacedFaces(_mesh, kPosition).size(), 1u);
    EXPECT_THAT(indices(kNormal), ElementsAre(kNoIndex)) << "the mesh would be incomplete otherwise";
}

TEST_F(UnplacedFacesTest, CornersBeyondTheListOfPositionsHaveNone) {
    positions(3);
    face({0, 1, 2});
    const quint32 three = 3;
    _mesh.faces.add(1, &three);
    _mesh.groups.addFaceRun(QStringLiteral("a"), 1, 1);
    EXPECT_EQ(removeUnplacedFaces(_mesh, kPosition).size(), 1u);
    EXPECT_THAT(facesOf("a"), ElementsAre(0));
}

} // namespace Atelier::Vel
