// Loads with the colours of vertices.

#include <array>
#include <cstring>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velmodel/objloader.h>

#include "modeldescription.h"
#include "support/messagelog.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;
using Testing::RecordingContext;

const QString kColour = QStringLiteral("va_Color");
const QString kPosition = QStringLiteral("va_Vertex");

LoadOptions coloured() {
    LoadOptions options;
    options.vertexColours = true;
    return options;
}

DrawData::Attribute attribute(const DrawData& data, const QString& name) {
    for (const DrawData::Attribute& each : data.attributes())
        if (each.name == name)
            return each;
    return {};
}

std::vector<float> valuesOf(const DrawData& data, const QString& name) {
    const DrawData::Attribute found = attribute(data, name);
    const auto* const values = static_cast<const float*>(found.data);
    return {values, values + found.bytes / sizeof(float)};
}

QStringList namesOf(const DrawData& data) {
    QStringList names;
    for (const DrawData::Attribute& each : data.attributes())
        names.append(each.name);
    return names;
}

/// The values of all attributes at each corner of the triangles.
std::vector<std::vector<float>> cornersOf(const DrawData& data) {
    std::vector<std::vector<float>> corners(data.indices().count);
    for (const DrawData::Attribute& each : data.attributes()) {
        const auto* const values = static_cast<const float*>(each.data);
        for (std::size_t corner = 0; corner < corners.size(); ++corner) {
            const float* const value = values + data.indices().data[corner] * quint64(each.components);
            corners[corner].insert(corners[corner].end(), value, value + each.components);
        }
    }
    return corners;
}

/// Random triangles and what has to become of them. Many positions and colours are equal.
class ColouredMesh {
public:
    enum class Faces {
        Usual,    ///< corners repeat, and are merged as they arrive
        Late,     ///< the same with an attribute that comes late, so that each attribute has its list
        Distinct, ///< the same without repeated corners, which are merged by their bytes only
    };

    ColouredMesh(unsigned int seed, Faces faces, int maxComponents) : _random(seed) {
        const int triangles = 300;
        const int positions = faces == Faces::Distinct ? 3 * triangles : 90;
        for (int i = 0; i < positions; ++i)
            addPosition(maxComponents);
        _text += "vt 0 0\nvt 1 0\n";
        if (faces == Faces::Usual)
            _text += "vn 0 0 1\n";
        for (int i = 0; i < triangles; ++i) {
            _text += 'f';
            for (int corner = 0; corner < 3; ++corner)
                addCorner(faces == Faces::Distinct ? 3 * i + corner : below(positions), below(2));
            _text += '\n';
        }
        if (faces != Faces::Usual)
            _text += "vn 0 0 1\nf 1/1/1 1/1/1 1/1/1\n";
    }

    const QByteArray& text() const { return _text; }
    /// Color, texture coordinate and position of each corner, in the order of their attributes' names.
    std::vector<std::vector<float>> corners(std::size_t components) const {
        std::vector<std::vector<float>> result;
        for (const auto& [position, texCoord] : _corners) {
            const std::array<float, 4>& colour = _colours[position];
            result.emplace_back(colour.begin(), colour.begin() + static_cast<std::ptrdiff_t>(components));
            result.back().insert(result.back().end(), {static_cast<float>(texCoord), 0});
            result.back().insert(result.back().end(), {_positions[position], 1, 2});
        }
        return result;
    }

private:
    int below(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(_random); }

    void addPosition(int maxComponents) {
        _positions.push_back(static_cast<float>(below(20)));
        _text += "v " + QByteArray::number(_positions.back(), 'f', 1) + " 1.0 2.0";
        std::array<float, 4> colour = {1, 1, 1, 1};
        const int choice = below(4);
        const int components = choice == 0 ? 0 : choice == 1 ? maxComponents : 3;
        for (int i = 0; i < components; ++i) {
            colour[static_cast<std::size_t>(i)] = static_cast<float>(below(3)) / 2;
            _text += ' ' + QByteArray::number(colour[static_cast<std::size_t>(i)], 'f', 1);
        }
        _text += '\n';
        _colours.push_back(colour);
    }
    void addCorner(int position, int texCoord) {
        _corners.emplace_back(position, texCoord);
        _text += ' ' + QByteArray::number(position + 1) + '/' + QByteArray::number(texCoord + 1);
    }

    std::mt19937 _random;
    QByteArray _text;
    std::vector<float> _positions;
    std::vector<std::array<float, 4>> _colours;
    std::vector<std::pair<std::size_t, int>> _corners;
};

class ColouredModelsTest : public testing::Test {
protected:
    QString write(const QByteArray& text) const {
        QFile file(_directory.filePath(QStringLiteral("m.obj")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        return file.fileName();
    }
    DrawData read(const QByteArray& text, const LoadOptions& options = coloured()) const {
        QString error;
        DrawData data = readDrawDataFromOBJFile(write(text), error, {}, &_report, options);
        EXPECT_TRUE(error.isNull()) << error.toStdString();
        return data;
    }
    QStringList uploaded(const LoadOptions& options) const {
        const RecordingContext context;
        QString error;
        const std::unique_ptr<GPUModel> model =
            loadModelFromOBJFile(_directory.filePath(QStringLiteral("m.obj")), error, options);
        EXPECT_NE(model, nullptr);
        QStringList result = context.calls() + Testing::describe(*model);
        for (const auto& buffer : context.recording().uploads)
            result.append(QString::fromLatin1(buffer.bytes.toHex()));
        return result;
    }

    mutable LoadReport _report;

private:
    QTemporaryDir _directory;
};

const QByteArray kColoured = "v 0 0 0 1 0 0\nv 1 0 0 0 0.5 0\nv 0 1 0 0 0 255\nf 1 2 3\n";

TEST_F(ColouredModelsTest, ColoursAreNotReadUnlessTheyAreWanted) {
    EXPECT_FALSE(LoadOptions().vertexColours);
    EXPECT_FALSE(LoadOptions::forgiving().vertexColours) << "colours are no repair";
    EXPECT_THAT(namesOf(read(kColoured, LoadOptions())), ElementsAre("va_Normal", kPosition));
    EXPECT_THAT(namesOf(read(kColoured, LoadOptions::forgiving())), ElementsAre("va_Normal", kPosition));
}

TEST_F(ColouredModelsTest, ColoursBecomeAnAttribute) {
    const DrawData data = read(kColoured);
    EXPECT_THAT(namesOf(data), ElementsAre(kColour, "va_Normal", kPosition));
    EXPECT_EQ(attribute(data, kColour).type, 0x1406U) << "GL_FLOAT";
    EXPECT_EQ(attribute(data, kColour).components, 3);
    EXPECT_THAT(valuesOf(data, kColour), ElementsAre(1, 0, 0, 0, 0.5F, 0, 0, 0, 255));
    EXPECT_THAT(valuesOf(data, kPosition), ElementsAre(0, 0, 0, 1, 0, 0, 0, 1, 0));
}

TEST_F(ColouredModelsTest, OneVertexWithAlphaGivesAllFourComponents) {
    const DrawData data = read("v 0 0 0\nv 1 0 0 0 0.5 0\nv 0 1 0 0 0 1 0.25\nf 1 2 3\n");
    EXPECT_EQ(attribute(data, kColour).components, 4);
    EXPECT_THAT(valuesOf(data, kColour), ElementsAre(1, 1, 1, 1, 0, 0.5F, 0, 1, 0, 0, 1, 0.25F));
}

TEST_F(ColouredModelsTest, FileWithoutColoursReadsAsWithoutTheOption) {
    for (const QByteArray text :
         {"v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", "v 0 0 0 1\nv 1 0 0 1\nv 0 1 0 1\nf 1 2 3\n",
          "v 0 0 0 1 1\nv 1 0 0 1 1 1 1 1\nv 0 1 0 1 1 x\nf 1 2 3\n"}) {
        const DrawData data = read(text);
        EXPECT_THAT(namesOf(data), ElementsAre("va_Normal", kPosition));
        EXPECT_EQ(cornersOf(data), cornersOf(read(text, LoadOptions())));
    }
}

TEST_F(ColouredModelsTest, EqualPositionsWithDifferentColoursAreDifferentVertices) {
    const QByteArray text = "v 0 0 0 1 0 0\nv 1 0 0 1 0 0\nv 0 1 0 1 0 0\nv 0 0 0 0 1 0\nv 1 0 0 1 0 0\n"
                            "f 1 2 3\nf 4 5 3\n";
    const DrawData data = read(text);
    EXPECT_EQ(data.vertexCount(), 4U);
    EXPECT_THAT(std::vector<quint32>(data.indices().data, data.indices().data + 6),
                ElementsAre(0, 1, 2, 3, 1, 2));
    EXPECT_EQ(read(text, LoadOptions()).vertexCount(), 3U);
}

TEST_F(ColouredModelsTest, EveryWayOfMergingGivesTheDefinedVertices) {
    using Faces = ColouredMesh::Faces;
    for (const Faces faces : {Faces::Usual, Faces::Late, Faces::Distinct})
        for (const int components : {3, 4})
            for (unsigned int seed = 0; seed < 5; ++seed) {
                SCOPED_TRACE(testing::Message()
                             << static_cast<int>(faces) << ' ' << components << ' ' << seed);
                const MessageLog log;
                const ColouredMesh mesh(seed, faces, components);
                const DrawData data = read(mesh.text());
                ASSERT_EQ(attribute(data, kColour).components, components);
                std::vector<std::vector<float>> corners = cornersOf(data);
                const std::set<std::vector<float>> vertices(corners.begin(), corners.end());
                ASSERT_EQ(data.vertexCount(), vertices.size());
                // Without the normals, and without the face that came with them.
                corners.resize(900);
                const auto normal = static_cast<std::ptrdiff_t>(components);
                for (std::vector<float>& corner : corners)
                    corner.erase(corner.begin() + normal, corner.begin() + normal + 3);
                ASSERT_EQ(corners, mesh.corners(static_cast<std::size_t>(components)));
            }
}

TEST_F(ColouredModelsTest, ColourMayComeAfterManyVerticesAndFaces) {
    QByteArray text = "v 0 0 0\nv 1 0 0\nv 0 1 0\n" + QByteArray("f 1 2 3\n").repeated(3000);
    text += QByteArray("v 5 5 5\n").repeated(3000) + "v 7 7 7 0.5 0.5 0.5\nf 3003 3004 1\n";
    const DrawData data = read(text);
    EXPECT_EQ(data.vertexCount(), 5U);
    EXPECT_THAT(valuesOf(data, kColour), ElementsAre(1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0.5F, 0.5F, 0.5F));
}

TEST_F(ColouredModelsTest, CornerWithoutAPositionHasAColourOfZeros) {
    const MessageLog log;
    const DrawData data = read("v 0 0 0 1 0 0\nv 1 0 0 1 0 0\nf 1 2 9\n");
    EXPECT_THAT(valuesOf(data, kColour), ElementsAre(1, 0, 0, 1, 0, 0, 0, 0, 0));
    EXPECT_EQ(_report.statistics.substitutedCorners, 2U) << "one in each attribute";
}

TEST_F(ColouredModelsTest, FacesWithoutAPositionAreDroppedIfThatIsRepaired) {
    LoadOptions options = coloured();
    options.repairs.dropUnplacedFaces = true;
    const DrawData data =
        read("v 0 0 0 1 0 0\nv 1 0 0 0 1 0\nv 0 1 0 0 0 1\nf 1 2 9\nf 3 2 1\nf 1 2 3\n", options);
    EXPECT_THAT(valuesOf(data, kColour), ElementsAre(0, 0, 1, 0, 1, 0, 1, 0, 0));
    EXPECT_THAT(std::vector<quint32>(data.indices().data, data.indices().data + data.indices().count),
                ElementsAre(0, 1, 2, 2, 1, 0));
}

TEST_F(ColouredModelsTest, ColourMayContinueOnTheNextLineIfThatIsRepaired) {
    LoadOptions options = coloured();
    const QByteArray text = "v 0 0 0 1 \\\n0.5 0\nv 1 0 0 0 1 \\\n0\nv 0 1 0 \\\n0 0 1\nf 1 2 3\n";
    EXPECT_THAT(valuesOf(read(text, options), kColour), IsEmpty());
    options.repairs.joinContinuedLines = true;
    EXPECT_THAT(valuesOf(read(text, options), kColour), ElementsAre(1, 0.5F, 0, 0, 1, 0, 0, 0, 1));
}

TEST_F(ColouredModelsTest, ColoursOfUnusedVerticesStillMakeTheAttribute) {
    const DrawData data = read("v 0 0 0\nv 1 0 0\nv 0 1 0\nv 9 9 9 1 0 0\nf 1 2 3\n");
    EXPECT_THAT(valuesOf(data, kColour), ElementsAre(1, 1, 1, 1, 1, 1, 1, 1, 1));
}

TEST_F(ColouredModelsTest, FileWithoutFacesHasNothingToDraw) {
    EXPECT_TRUE(read("v 0 0 0 1 0 0\n").isNull());
}

TEST_F(ColouredModelsTest, ColoursAreUploadedLikeAnyAttribute) {
    write(kColoured);
    const float colours[] = {1, 0, 0, 0, 0.5F, 0, 0, 0, 255};
    const QByteArray bytes(reinterpret_cast<const char*>(colours), sizeof colours);
    const QString buffer = QString::fromLatin1(bytes.toHex());
    const QStringList with = uploaded(coloured());
    EXPECT_TRUE(with.contains(buffer));
    EXPECT_FALSE(with.filter(kColour).isEmpty());
    const QStringList without = uploaded(LoadOptions());
    EXPECT_FALSE(without.contains(buffer));
    EXPECT_THAT(without.filter(kColour), IsEmpty());
}

} // namespace
} // namespace Atelier::Vel
