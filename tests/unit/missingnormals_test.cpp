#include "import/missingnormals.h"

#include <cmath>
#include <cstring>
#include <vector>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QVector3D>

#include <gmock/gmock.h>

#include <velmodel/objloader.h>

#include "import/smoothinggroups.h"
#include "support/messagelog.h"

namespace Atelier::Vel {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;
using Kind = NormalOptions::Kind;

/// A corner of a triangle that is drawn.
struct DrawnCorner {
    QVector3D position;
    QVector3D normal;
};

QVector3D value(const DrawData& data, const QString& name, quint32 vertex) {
    for (const DrawData::Attribute& attribute : data.attributes())
        if (attribute.name == name) {
            const float* const floats = static_cast<const float*>(attribute.data) + quint64{vertex} * 3;
            return {floats[0], floats[1], floats[2]};
        }
    ADD_FAILURE() << "no " << name.toStdString();
    return {};
}

std::vector<DrawnCorner> cornersOf(const DrawData& data) {
    std::vector<DrawnCorner> corners;
    for (quint64 i = 0; i < data.indices().count; ++i) {
        const quint32 vertex = data.indices().data[i];
        corners.push_back({value(data, QStringLiteral("va_Vertex"), vertex),
                           value(data, QStringLiteral("va_Normal"), vertex)});
    }
    return corners;
}

testing::AssertionResult isNear(const QVector3D& a, const QVector3D& b) {
    if ((a - b).length() < 1e-5F)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << a.x() << ' ' << a.y() << ' ' << a.z() << " and " << b.x() << ' ' << b.y() << ' ' << b.z();
}

class MissingNormalsTest : public testing::Test {
protected:
    DrawData read(const QByteArray& text, const LoadOptions& options) {
        const QString path = _directory.filePath(QStringLiteral("m.obj"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        file.close();
        QString error;
        _report = {};
        const DrawData data = readDrawDataFromOBJFile(path, error, {}, &_report, options);
        EXPECT_TRUE(error.isEmpty()) << error.toStdString();
        return data;
    }
    std::vector<DrawnCorner> corners(const QByteArray& text, const NormalOptions& normals) {
        LoadOptions options;
        options.normals = normals;
        return cornersOf(read(text, options));
    }
    std::vector<DrawnCorner> repaired(const QByteArray& text, const NormalOptions& normals = {}) {
        LoadOptions options;
        options.normals = normals;
        options.repairs.generateMissingNormals = true;
        return cornersOf(read(text, options));
    }

    LoadReport _report;

private:
    QTemporaryDir _directory;
};

NormalOptions outward(NormalOptions options) {
    options.outward = true;
    return options;
}

const QByteArray kCubePositions = "v -1 -1 -1\nv 1 -1 -1\nv -1 1 -1\nv 1 1 -1\n"
                                  "v -1 -1 1\nv 1 -1 1\nv -1 1 1\nv 1 1 1\n";
const QByteArray kCube =
    kCubePositions + "f 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n";

/// A closed band of triangles around an axis, with a seam of texture coordinates at its beginning.
QByteArray bandWithSeam(bool hasTexture) {
    constexpr int kSides = 12;
    QByteArray text;
    QByteArray faces;
    for (int i = 0; i < kSides; ++i)
        for (const char* const height : {"0", "1"})
            text += "v " + QByteArray::number(std::cos(i * 6.283185 / kSides)) + ' ' + height + ' ' +
                    QByteArray::number(std::sin(i * 6.283185 / kSides)) + '\n';
    for (int i = 0; hasTexture && i <= kSides; ++i)
        text += "vt " + QByteArray::number(i) + " 0\nvt " + QByteArray::number(i) + " 1\n";
    const auto corner = [hasTexture](int number) {
        const QByteArray position = QByteArray::number(number % (2 * kSides) + 1);
        return ' ' + (hasTexture ? position + '/' + QByteArray::number(number + 1) : position);
    };
    for (int i = 0; i < kSides; ++i)
        faces += 'f' + corner(2 * i) + corner(2 * i + 1) + corner(2 * i + 3) + "\nf" + corner(2 * i) +
                 corner(2 * i + 3) + corner(2 * i + 2) + '\n';
    return text + faces;
}

/// The greatest distance between the normals of two corners at the same position.
float widestSplit(const std::vector<DrawnCorner>& corners) {
    float widest = 0;
    for (const DrawnCorner& a : corners)
        for (const DrawnCorner& b : corners)
            if (a.position == b.position)
                widest = std::max(widest, (a.normal - b.normal).length());
    return widest;
}

TEST_F(MissingNormalsTest, DefinedNormalsPointInwardsAndSplitAtASeam) {
    EXPECT_GT(widestSplit(corners(bandWithSeam(true), {})), 0.1F);
    for (const DrawnCorner& corner : corners(kCube, {}))
        EXPECT_LT(QVector3D::dotProduct(corner.position, corner.normal), 0);
}

TEST_F(MissingNormalsTest, SmoothNormalsHideASeam) {
    EXPECT_EQ(widestSplit(corners(bandWithSeam(true), NormalOptions::smooth())), 0);
}

TEST_F(MissingNormalsTest, SmoothNormalsAreTheDefinedOnesOfTheMeshWithoutSeams) {
    const std::vector<DrawnCorner> smooth = corners(bandWithSeam(true), NormalOptions::smooth());
    const std::vector<DrawnCorner> defined = corners(bandWithSeam(false), {});
    ASSERT_EQ(smooth.size(), defined.size());
    for (std::size_t i = 0; i < smooth.size(); ++i)
        EXPECT_EQ(std::memcmp(&smooth[i], &defined[i], sizeof smooth[i]), 0) << i;
}

TEST_F(MissingNormalsTest, PositionsThatAreGivenTwiceAreSmoothedTogether) {
    const QByteArray roof = "v 0 0 1\nv 0 1 1\nv -1 0 0\nv 0 0 1\nv 0 1 1\nv 1 0 0\nf 1 2 3\nf 4 6 5\n";
    for (const NormalOptions& options : {NormalOptions::smooth(), NormalOptions::crease(180)}) {
        const std::vector<DrawnCorner> made = corners(roof, outward(options));
        ASSERT_EQ(made.size(), 6U);
        EXPECT_TRUE(isNear(made[0].normal, {0, 0, 1}));
        EXPECT_TRUE(isNear(made[5].normal, {0, 0, 1}));
    }
}

TEST_F(MissingNormalsTest, CubeWithACreaseOf30DegreesIsFlat) {
    const std::vector<DrawnCorner> made = corners(kCube, NormalOptions::crease(30));
    ASSERT_EQ(made.size(), 36U);
    EXPECT_EQ(_report.statistics.vertices, 24U);
    for (std::size_t i = 0; i < made.size(); i += 3) {
        const QVector3D middle = made[i].position + made[i + 1].position + made[i + 2].position;
        for (std::size_t k = i; k < i + 3; ++k) {
            EXPECT_EQ(made[k].normal, made[i].normal);
            EXPECT_NEAR(made[k].normal.length(), 1, 1e-6F);
            EXPECT_NEAR(QVector3D::dotProduct(middle, made[k].normal), -3, 1e-5F) << "inwards";
        }
    }
}

TEST_F(MissingNormalsTest, CubeWithACreaseOf91DegreesIsRound) {
    for (const DrawnCorner& corner : corners(kCube, NormalOptions::crease(91)))
        EXPECT_TRUE(isNear(corner.normal, -corner.position.normalized()));
    EXPECT_EQ(_report.statistics.vertices, 8U) << "equal normals are merged";
}

TEST_F(MissingNormalsTest, SmoothingGroupsAreThoseOfTheLastLine) {
    const QByteArray group = "v -1 -1 -1\nv 1 -1 -1\nv -1 1 -1\nv 1 1 -1\nv -1 -1 1\nv -1 1 1\n";
    const QByteArray side = "f 1 3 4 2\n";
    const QByteArray other = "f 1 5 6 3\n";
    const QVector3D sideNormal(0, 0, 1);
    const QVector3D sum = QVector3D(1, 0, 1).normalized();
    struct Row {
        QByteArray faces;
        QVector3D expected; ///< of the first corner
    };
    for (const Row& row : {Row{"s 1\n" + side + other, sum},
                           {"s 1\n" + side + "s 2\n" + other, sideNormal},
                           {"s 1\n" + side + "s 2\ns 1\n" + other, sum},
                           {"s 7\n" + side + "s off\ns 7\n" + other, sum},
                           {"s 1\n" + side + "usemtl <default>\ns 2\n" + other, sideNormal},
                           {"s 1\n" + side + "usemtl <default>\n" + other, sum},
                           {"s 7\n" + side + "s 0\n" + other, sideNormal},
                           {"s 7\n" + side + "s off\n" + other, sideNormal},
                           {"s off\n" + side + other, sideNormal},
                           {"s 0\n" + side + other, sideNormal},
                           {"s on\n" + side + "s 1\n" + other, sum},
                           {"s what\n" + side + other, sideNormal},
                           {"s\n" + side + other, sideNormal},
                           {"s -3\n" + side + other, sum},
                           {side + other, sideNormal},
                           {side + "s 1\n" + other, sideNormal}}) {
        const std::vector<DrawnCorner> made = corners(group + row.faces, NormalOptions::smoothingGroups());
        ASSERT_EQ(made.size(), 12U);
        EXPECT_TRUE(isNear(made[0].normal, row.expected)) << row.faces.toStdString();
    }
}

TEST_F(MissingNormalsTest, SmoothingGroupMayComeBeforeTheFirstVertex) {
    for (const DrawnCorner& corner : corners("s 1\n" + kCube, NormalOptions::smoothingGroups()))
        EXPECT_TRUE(isNear(corner.normal, -corner.position.normalized()));
    EXPECT_EQ(_report.statistics.vertices, 8U);
}

TEST_F(MissingNormalsTest, SmoothingGroupsOfManyFacesAreThoseOfTheirLines) {
    // Pairs of faces with an edge in common, of which every third is smooth; more than fit one run.
    QByteArray text;
    for (int i = 0; i < 3000; ++i) {
        text += "s " + QByteArray(i % 3 == 0 ? "5" : "off") + '\n';
        for (const char* const point : {" 0 0", " 1 0", " 0 1", " 1 -1"})
            text += "v " + QByteArray::number(i) + point + '\n';
        text += "f -4 -3 -2\nf -4 -2 -1\n";
    }
    const std::vector<DrawnCorner> made = corners(text, NormalOptions::smoothingGroups());
    ASSERT_EQ(made.size(), 18'000U);
    for (std::size_t i = 0; i < 3000; ++i)
        ASSERT_EQ(made[6 * i].normal == made[6 * i + 3].normal, i % 3 == 0) << i;
}

TEST_F(MissingNormalsTest, SmoothingLinesChangeNothingInOtherModes) {
    QByteArray text = kCube;
    text.replace("f ", "s 1\nf ");
    for (const NormalOptions& options :
         {NormalOptions(), NormalOptions::smooth(), NormalOptions::crease(30)}) {
        const std::vector<DrawnCorner> with = corners(text, options);
        const std::vector<DrawnCorner> without = corners(kCube, options);
        ASSERT_EQ(with.size(), without.size());
        EXPECT_EQ(std::memcmp(with.data(), without.data(), with.size() * sizeof with[0]), 0);
    }
}

TEST_F(MissingNormalsTest, OutwardTurnsTheNormalsOfEveryKind) {
    const QByteArray text = "s 1\n" + kCube + "v 5 5 5\n";
    for (const NormalOptions& options : {NormalOptions(), NormalOptions::smooth(), NormalOptions::crease(30),
                                         NormalOptions::crease(91), NormalOptions::smoothingGroups()}) {
        const std::vector<DrawnCorner> inwards = corners(text, options);
        const std::vector<DrawnCorner> outwards = corners(text, outward(options));
        ASSERT_EQ(inwards.size(), outwards.size());
        for (std::size_t i = 0; i < inwards.size(); ++i) {
            EXPECT_EQ(outwards[i].position, inwards[i].position);
            EXPECT_EQ(outwards[i].normal, -inwards[i].normal);
            EXPECT_GT(QVector3D::dotProduct(outwards[i].position, outwards[i].normal), 0.5F);
            for (const QVector3D& normal : {inwards[i].normal, outwards[i].normal})
                for (int axis = 0; axis < 3; ++axis)
                    EXPECT_FALSE(normal[axis] == 0 && std::signbit(normal[axis]));
        }
    }
}

TEST_F(MissingNormalsTest, TurnedZerosArePositive) {
    const QByteArray triangle = "v 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3\n";
    for (const NormalOptions& options : {NormalOptions(), NormalOptions::smooth(), NormalOptions::crease(30),
                                         NormalOptions::smoothingGroups()})
        for (const DrawnCorner& corner : corners(triangle, outward(options))) {
            EXPECT_EQ(corner.normal, QVector3D(0, 0, 1));
            EXPECT_FALSE(std::signbit(corner.normal.x()) || std::signbit(corner.normal.y()));
        }
}

const QByteArray kSquare = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";
/// Two triangles of a square: the second one has no normals.
const QByteArray kHalf = kSquare + "vn 1 0 0\nf 1//1 2//1 3//1\nf 1 3 4\n";

std::vector<QVector3D> normalsOf(const std::vector<DrawnCorner>& corners) {
    std::vector<QVector3D> normals;
    for (const DrawnCorner& corner : corners)
        normals.push_back(corner.normal);
    return normals;
}

const QVector3D kOwn(1, 0, 0);
const QVector3D kUp(0, 0, 1);
const QVector3D kZero;

TEST_F(MissingNormalsTest, CornersWithoutANormalGetZerosByDefault) {
    EXPECT_THAT(normalsOf(corners(kHalf, {})), ElementsAre(kOwn, kOwn, kOwn, kZero, kZero, kZero));
    EXPECT_EQ(_report.statistics.substitutedCorners, 3U);
    EXPECT_THAT(normalsOf(corners(kHalf, outward({}))), ElementsAre(kOwn, kOwn, kOwn, kZero, kZero, kZero));
}

TEST_F(MissingNormalsTest, PartsWithoutNormalsGetThoseOfTheOptions) {
    for (const NormalOptions& options :
         {NormalOptions::smooth(), NormalOptions::crease(30), NormalOptions::smoothingGroups()}) {
        EXPECT_THAT(normalsOf(corners(kHalf, options)), ElementsAre(kOwn, kOwn, kOwn, -kUp, -kUp, -kUp));
        EXPECT_THAT(normalsOf(corners(kHalf, outward(options))),
                    ElementsAre(kOwn, kOwn, kOwn, kUp, kUp, kUp));
        EXPECT_EQ(_report.statistics.substitutedCorners, 0U);
        EXPECT_THAT(_report.diagnostics, IsEmpty()) << "nothing is repaired";
    }
}

TEST_F(MissingNormalsTest, FacesWithNormalsAddToTheNormalsOfOthers) {
    QByteArray text = kCube;
    text.insert(0, "vn 1 0 0\n").replace("f 5 6 8 7", "f 5//1 6//1 8//1 7//1");
    for (const NormalOptions& options : {NormalOptions::smooth(), NormalOptions::crease(91)}) {
        int own = 0;
        const std::vector<DrawnCorner> expected = corners(kCube, outward(options));
        const std::vector<DrawnCorner> made = corners(text, outward(options));
        for (std::size_t i = 0; i < made.size(); ++i) {
            own += made[i].normal == kOwn ? 1 : 0;
            EXPECT_TRUE(made[i].normal == kOwn || made[i].normal == expected[i].normal);
        }
        EXPECT_EQ(own, 6);
    }
}

TEST_F(MissingNormalsTest, FacesBeforeTheFirstNormalLackThem) {
    const QByteArray late = kSquare + "f 1 2 3\nvn 1 0 0\nf 1//1 3//1 4//1\n";
    EXPECT_THAT(normalsOf(corners(late, {})), ElementsAre(kOwn, kOwn, kOwn, kZero, kZero, kZero))
        << "by default the indices go to the first corners";
    for (const NormalOptions& options : {NormalOptions::smooth(), NormalOptions::crease(30)})
        EXPECT_THAT(normalsOf(corners(late, outward(options))), ElementsAre(kUp, kUp, kUp, kOwn, kOwn, kOwn));
    EXPECT_THAT(normalsOf(repaired(late)), ElementsAre(kUp, kUp, kUp, kOwn, kOwn, kOwn));
    const QByteArray unused = kSquare + "f 1 2 3\nvn 1 0 0\n";
    EXPECT_THAT(normalsOf(repaired(unused)), Each(kUp)) << "otherwise nothing is drawn";
    EXPECT_EQ(_report.statistics.triangles, 1U);
}

TEST_F(MissingNormalsTest, NormalsThatDoNotExistAreZeroWithoutARepair) {
    const MessageLog log;
    const QByteArray text = kSquare + "vn 1 0 0\nf 1//1 2//2 3//-5\nf 1 3 4//9\n";
    for (const NormalOptions& options : {NormalOptions::smooth(), NormalOptions::crease(30)})
        EXPECT_THAT(normalsOf(corners(text, outward(options))),
                    ElementsAre(kOwn, kZero, kZero, kUp, kUp, kZero));
    EXPECT_EQ(_report.statistics.substitutedCorners, 3U);
}

TEST_F(MissingNormalsTest, RepairGeneratesNormalsThatDoNotExist) {
    const QByteArray text = kSquare + "vn 1 0 0\nf 1//1 2//2 3//-5\nf 1 3 4//9\n";
    EXPECT_THAT(normalsOf(repaired(text)), ElementsAre(kOwn, kUp, kUp, kUp, kUp, kUp));
    EXPECT_EQ(_report.statistics.substitutedCorners, 0U);
    ASSERT_EQ(_report.diagnostics.size(), 2);
    for (const LoadDiagnostic& diagnostic : qAsConst(_report.diagnostics)) {
        EXPECT_EQ(diagnostic.code, LoadDiagnostic::Code::MissingNormals);
        EXPECT_TRUE(diagnostic.file.endsWith(QStringLiteral("m.obj")));
    }
    EXPECT_EQ(_report.diagnostics[0].message,
              QStringLiteral("2 corners have no normal, and get generated ones"));
    EXPECT_EQ(_report.diagnostics[1].message,
              QStringLiteral("3 corners have no normal, and get generated ones"));
    EXPECT_EQ(_report.diagnosticCounts[LoadDiagnostic::Code::MissingNormals], 2U);
}

TEST_F(MissingNormalsTest, RepairFollowsTheOptions) {
    const QByteArray text = kSquare + "vn 1 0 0\nf 1//1 2//2 3//-5\nf 1 3 4//9\n";
    for (const NormalOptions& options :
         {NormalOptions::smooth(), NormalOptions::crease(30), NormalOptions::smoothingGroups()}) {
        EXPECT_THAT(normalsOf(repaired(text, options)), ElementsAre(kOwn, -kUp, -kUp, -kUp, -kUp, -kUp));
        EXPECT_THAT(normalsOf(repaired(text, outward(options))), ElementsAre(kOwn, kUp, kUp, kUp, kUp, kUp));
        EXPECT_EQ(_report.diagnostics.size(), 2);
    }
}

TEST_F(MissingNormalsTest, RepairSharesNormalsAtASeam) {
    QByteArray text = bandWithSeam(true);
    text.insert(0, "vn 0 1 0\n");
    const std::vector<DrawnCorner> smooth = corners(bandWithSeam(true), outward(NormalOptions::smooth()));
    const std::vector<DrawnCorner> made = repaired(text);
    ASSERT_EQ(made.size(), smooth.size());
    EXPECT_EQ(std::memcmp(made.data(), smooth.data(), made.size() * sizeof made[0]), 0);
}

TEST_F(MissingNormalsTest, RepairLeavesCompleteFilesAndFilesWithoutNormalsAlone) {
    const QByteArray complete = kSquare + "vn 1 0 0\nf 1//1 2//1 3//1\n";
    EXPECT_THAT(normalsOf(repaired(complete)), Each(kOwn));
    EXPECT_THAT(_report.diagnostics, IsEmpty());
    EXPECT_THAT(normalsOf(repaired(kSquare + "f 1 2 3\n")), Each(-kUp)) << "as defined";
    EXPECT_THAT(_report.diagnostics, IsEmpty());
    EXPECT_THAT(normalsOf(repaired(kSquare + "f 1 2 3\n", NormalOptions::crease(30))), Each(-kUp));
    EXPECT_THAT(_report.diagnostics, IsEmpty());
    EXPECT_THAT(normalsOf(repaired(kSquare + "vn nan 0 0\nvn 0 0 0\nf 1//2 2//2 3//2\n")), Each(kZero));
    EXPECT_THAT(_report.diagnostics, IsEmpty());
}

TEST_F(MissingNormalsTest, NormalsMayComeAfterTheFacesThatUseThem) {
    const QByteArray text = "vn 0 1 0\n" + kSquare + "f 1//2 2//2 3//1\nvn 1 0 0\n";
    EXPECT_THAT(normalsOf(repaired(text)), ElementsAre(kOwn, kOwn, QVector3D(0, 1, 0)));
    EXPECT_THAT(_report.diagnostics, IsEmpty());
}

TEST_F(MissingNormalsTest, ForgivingOptionsRepairMissingNormals) {
    const LoadOptions options = LoadOptions::forgiving();
    EXPECT_EQ(options.normals.kind, Kind::Defined);
    EXPECT_FALSE(options.normals.outward);
    EXPECT_THAT(normalsOf(cornersOf(read(kHalf, options))), ElementsAre(kOwn, kOwn, kOwn, kUp, kUp, kUp));
    EXPECT_FALSE(LoadOptions().repairs.generateMissingNormals);
}

// Faces of several sizes and more corners than a run, a block and a piece of the meter.
TEST_F(MissingNormalsTest, LargeMeshesGetTheSameNormalsAsSmallOnes) {
    const MessageLog log;
    for (const NormalOptions& options :
         {NormalOptions::smooth(), NormalOptions::crease(30), NormalOptions::smoothingGroups()}) {
        QByteArray text = "vn 1 0 0\n" + kSquare;
        for (int i = 0; i < 30'000; ++i)
            text += "f 1//1 2//1 3//1\nf 1 2 3 4\nf 1/1/9 3 4\n";
        const std::vector<QVector3D> normals = normalsOf(corners(text, outward(options)));
        ASSERT_EQ(normals.size(), 360'000U);
        for (std::size_t i = 0; i < normals.size(); i += 12)
            ASSERT_THAT(std::vector<QVector3D>(normals.begin() + i, normals.begin() + i + 12),
                        ElementsAre(kOwn, kOwn, kOwn, kUp, kUp, kUp, kUp, kUp, kUp, kZero, kUp, kUp));
    }
}

TEST_F(MissingNormalsTest, TextWithoutAMeshIsLeftAlone) {
    const MessageLog log;
    for (const char* const text :
         {"", "f 1 2 3\n", "vn 0 0 1\nf 1 2 3\n", "f 1 2 3\nv 0 0 0\n", "v 0 0 0\nf\n", "v 0 0 0\nvn 0 0 1\n",
          "f\ns 1\nv 0 0 0\n", "v 0 0 0\nf 1\nf 1 1\n"})
        for (const NormalOptions& options : {NormalOptions(), NormalOptions::smooth(),
                                             NormalOptions::crease(30), NormalOptions::smoothingGroups()}) {
            LoadOptions load;
            load.normals = options;
            load.repairs.generateMissingNormals = true;
            EXPECT_TRUE(read(text, load).isEmpty()) << text;
        }
}

TEST_F(MissingNormalsTest, FacesOfNoMaterialStillHaveNormals) {
    const MessageLog log;
    const std::vector<DrawnCorner> made =
        corners(kCubePositions + "usemtl none\nf 1 2 6 5\nusemtl <default>\nf 1 3 4 2\nf 1 2 5\n",
                outward(NormalOptions::crease(180)));
    ASSERT_EQ(made.size(), 9U);
    EXPECT_LT(made[0].normal.y(), -0.5F) << "they add to those of other faces";
}

TEST_F(MissingNormalsTest, ProgressIsReportedBeforeMergingAndCancels) {
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("m.obj"));
    QFile model(path);
    ASSERT_TRUE(model.open(QIODevice::WriteOnly));
    model.write(kSquare + QByteArray("f 1 2 3 4\n").repeated(100'000));
    model.close();
    LoadOptions options;
    options.normals = NormalOptions::crease(30);
    std::vector<LoadPhase> phases;
    int steps = 0;
    QString error;
    const auto observe = [&](const LoadStep& step) {
        if (phases.empty() || phases.back() != step.phase)
            phases.push_back(step.phase);
        steps += step.phase == LoadPhase::MakingNormals ? 1 : 0;
        return true;
    };
    EXPECT_FALSE(readDrawDataFromOBJFile(path, error, observe, nullptr, options).isNull());
    EXPECT_THAT(phases, ElementsAre(LoadPhase::Reading, LoadPhase::MakingNormals, LoadPhase::Merging,
                                    LoadPhase::Triangulating));
    EXPECT_GT(steps, 5);
    const auto cancel = [](const LoadStep& step) {
        return step.phase != LoadPhase::MakingNormals || step.done == 0;
    };
    EXPECT_TRUE(readDrawDataFromOBJFile(path, error, cancel, nullptr, options).isNull());
    EXPECT_TRUE(error.contains(QStringLiteral("cancelled")));
}

TEST(SmoothingGroupsTest, FacesBelongToTheGroupOfTheLastLineBeforeThem) {
    SmoothingGroups groups;
    EXPECT_THAT(groups.ofFaces(2), ElementsAre(0, 0));
    groups.begin(1, QStringLiteral("3"));
    groups.begin(2, QStringLiteral("3"));
    groups.begin(3, QStringLiteral("4"));
    groups.begin(3, QStringLiteral("off"));
    groups.begin(4, QStringLiteral("on"));
    EXPECT_THAT(groups.ofFaces(6), ElementsAre(0, 3, 3, 0, 1, 1));
    EXPECT_THAT(groups.ofFaces(2), ElementsAre(0, 3)) << "lines after the last face have no effect";
    EXPECT_THAT(groups.ofFaces(0), IsEmpty());
}

} // namespace
} // namespace Atelier::Vel
