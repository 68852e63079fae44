#include "import/meshfeed.h"

#include <vector>

#include <QtCore/QBuffer>
#include <QtCore/QTextStream>

#include <gmock/gmock.h>

#include "import/facegroups.h"
#include "import/obj/objreader.h"
#include "mesh/mesh.h"
#include "support/streamcontents.h"

namespace Atelier::Vel {
namespace {

using Testing::elements;
using testing::ElementsAre;
using testing::IsEmpty;

const QString kPosition = QStringLiteral("va_Vertex");
const QString kNormal = QStringLiteral("va_Normal");
const QString kTexCoord = QStringLiteral("va_TexCoord");

class MeshFeedTest : public testing::Test {
protected:
    MeshFeedTest() { addGroup("<default>"); }

    void addGroup(const char* name) { _mesh.groups.create(QString::fromLatin1(name), InstanceData(), -1, 0); }
    /// Hands the records of a text to the mesh one by one.
    void feed(const QByteArray& text) {
        QBuffer buffer;
        buffer.setData(text);
        ASSERT_TRUE(buffer.open(QIODevice::ReadOnly | QIODevice::Text));
        QTextStream stream(&buffer);
        ObjReader reader(&stream, {}, nullptr);
        for (; reader.hasNext(); reader.next())
            if (reader.read() && reader.kind() == ObjReader::Kind::UseMaterial)
                _feed.useMaterial({reader.text(), {}});
            else
                _feed.addRecord(reader);
    }
    std::vector<quint32> facesOf(const char* group) {
        std::vector<quint32> faces;
        _mesh.groups.find(QString::fromLatin1(group))->faces.forEach([&faces](const WordView& part) {
            faces.insert(faces.end(), part.words, part.words + part.count);
            return true;
        });
        return faces;
    }
    std::vector<float> valuesOf(const QString& attribute) {
        return elements<float>(_mesh.attributes[attribute].streams[kValues]);
    }
    std::vector<quint32> indicesOf(const QString& attribute) {
        return elements<quint32>(_mesh.attributes[attribute].streams[kIndices]);
    }

    Mesh _mesh{Input::Kept};
    LoadOptions _options;
    DiagnosticLog _diagnostics;
    MaterialDefinitions _materials{_mesh.groups, _options, _diagnostics};
    FaceGroups _groups{_mesh.groups, _materials};
    MeshFeed _feed{_mesh, _groups};
};

const QByteArray kTriangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";

TEST_F(MeshFeedTest, RecordsReachTheMeshWithTheFlush) {
    feed(kTriangle);
    EXPECT_TRUE(_mesh.faces.isEmpty()) << "they are handed on many at a time";
    _feed.finish();
    EXPECT_THAT(valuesOf(kPosition), ElementsAre(0, 0, 0, 1, 0, 0, 0, 1, 0));
    EXPECT_THAT(indicesOf(kPosition), ElementsAre(0, 1, 2));
    EXPECT_THAT(elements<quint32>(_mesh.faces.listed()), ElementsAre(3));
    EXPECT_EQ(_feed.corners(), 3U);
    EXPECT_EQ(_feed.faces(), 1U);
}

TEST_F(MeshFeedTest, AttributesAreDeclaredByTheirFirstLine) {
    feed(kTriangle);
    _feed.flush();
    EXPECT_FALSE(_mesh.attributes.contains(kTexCoord));
    feed("vt 0.5 0.25\nf 1/1 2 3/1\n");
    _feed.flush();
    EXPECT_THAT(valuesOf(kTexCoord), ElementsAre(0.5F, 0.25F));
    EXPECT_THAT(indicesOf(kTexCoord), ElementsAre(0, kNoIndex, 0)) << "earlier faces give none";
}

TEST_F(MeshFeedTest, NormalsAreMadeIfTheTextGivesNone) {
    feed(kTriangle);
    _feed.finish();
    EXPECT_EQ(_mesh.normalsAttribute, kNormal);
}

TEST_F(MeshFeedTest, NormalsOfTheTextAreKept) {
    feed("vn 0 0 1\n" + kTriangle);
    _feed.finish();
    EXPECT_TRUE(_mesh.normalsAttribute.isNull());
    EXPECT_THAT(valuesOf(kNormal), ElementsAre(0, 0, 1));
}

TEST_F(MeshFeedTest, AlignedNormalsLeaveOutTheCornersBeforeTheFirstOne) {
    _feed.alignNormals();
    feed(kTriangle + "vn 0 0 1\nvt 0 0\n");
    feed("f 1//1 2//1 3//1\n");
    _feed.finish();
    EXPECT_THAT(indicesOf(kNormal), ElementsAre(kNoIndex, kNoIndex, kNoIndex, 0, 0, 0));
    EXPECT_THAT(indicesOf(kTexCoord), ElementsAre(kNoIndex)) << "other attributes are not aligned";
}

TEST_F(MeshFeedTest, NextFaceCountsThoseThatAreNotYetInTheMesh) {
    EXPECT_EQ(_feed.nextFace(), 0U);
    feed(kTriangle + "f 3 2 1\n");
    EXPECT_EQ(_feed.nextFace(), 2U);
    _feed.useMaterial({QStringLiteral("red"), {}});
    EXPECT_EQ(_feed.nextFace(), 2U);
    feed("f 1 2 3\n");
    EXPECT_EQ(_feed.nextFace(), 3U);
    _feed.flush();
    EXPECT_EQ(_feed.nextFace(), 3U);
}

TEST_F(MeshFeedTest, FacesJoinTheGroupOfTheirMaterial) {
    addGroup("red");
    feed(kTriangle + "f 1 2 3\nusemtl red\nf 3 2 1\nusemtl <default>\nf 2 3 1\n");
    _feed.finish();
    EXPECT_THAT(facesOf("<default>"), ElementsAre(0, 1, 3));
    EXPECT_THAT(facesOf("red"), ElementsAre(2));
    EXPECT_EQ(_feed.facesWithoutGroup(), 0U);
}

TEST_F(MeshFeedTest, FacesOfAnUnknownMaterialJoinNoGroup) {
    feed(kTriangle + "usemtl none\nf 1 2 3\nf 1 2 3\nusemtl <default>\nf 3 2 1\n");
    _feed.finish();
    EXPECT_THAT(facesOf("<default>"), ElementsAre(0, 3));
    EXPECT_EQ(_feed.faces(), 4U);
    EXPECT_EQ(_feed.facesWithoutGroup(), 2U);
}

TEST_F(MeshFeedTest, GroupThatIsMadeAfterAFlushGetsLaterFacesOnly) {
    feed(kTriangle + "usemtl late\nf 1 2 3\n");
    _feed.flush();
    addGroup("late");
    feed("f 3 2 1\n");
    _feed.finish();
    EXPECT_THAT(facesOf("late"), ElementsAre(2));
    EXPECT_EQ(_feed.facesWithoutGroup(), 1U);
}

TEST_F(MeshFeedTest, FacesAndVerticesBeyondARunAreAllHandedOn) {
    const int count = 3 * static_cast<int>(ObjRun::kRecords) + 1;
    feed(QByteArray("v 1 2 3\n").repeated(count) + QByteArray("f 1 2 3\n").repeated(count));
    _feed.finish();
    EXPECT_EQ(valuesOf(kPosition).size(), 3U * count);
    EXPECT_EQ(indicesOf(kPosition).size(), 3U * count);
    EXPECT_EQ(facesOf("<default>").size(), static_cast<std::size_t>(count));
    EXPECT_EQ(facesOf("<default>").back(), static_cast<quint32>(count) - 1);
}

TEST_F(MeshFeedTest, FaceWithMoreCornersThanARunIsOneFace) {
    const int corners = 2 * static_cast<int>(ObjRun::kCorners) + 5;
    feed("v 0 0 0\nf" + QByteArray(" 1").repeated(corners) + "\n");
    _feed.finish();
    EXPECT_THAT(elements<quint32>(_mesh.faces.listed()), ElementsAre(static_cast<quint32>(corners)));
    EXPECT_EQ(_feed.corners(), static_cast<quint64>(corners));
}

TEST_F(MeshFeedTest, RunHasCapacityForALineOfAnyKind) {
    for (std::size_t line = 0; line < 3 * ObjRun::kRecords; ++line) {
        ObjRun& run = _feed.run();
        ASSERT_FALSE(run.isFull());
        run.addFace(ObjRun::kPlainCorners);
    }
    EXPECT_THAT(facesOf("<default>"), testing::Not(IsEmpty())) << "full runs were handed on";
}

} // namespace
} // namespace Atelier::Vel
