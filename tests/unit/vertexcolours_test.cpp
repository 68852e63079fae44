#include "import/vertexcolours.h"

#include <memory>
#include <vector>

#include <gmock/gmock.h>

#include "mesh/mergedcorners.h"
#include "mesh/mesh.h"
#include "support/streamcontents.h"

namespace Atelier::Vel {
namespace {

using testing::Each;
using Testing::elements;
using testing::ElementsAre;
using testing::SizeIs;

const QString kPosition = QStringLiteral("va_Vertex");
const QString kColour = QStringLiteral("va_Color");
const float kGrey[] = {0.5F, 0.5F, 0.5F, 0.25F};
constexpr unsigned int kFloat = 0x1406;
constexpr int kBlock = static_cast<int>(ObjRun::kRecords);

class VertexColoursTest : public testing::Test {
protected:
    VertexColoursTest() { _mesh.attributes.create(kPosition, 3, kFloat, 0, 0); }

    /// Takes a run of positions that all have a colour of so many components.
    void take(int positions, int components) {
        for (int i = 0; i < positions; ++i)
            _run->addColour(ObjColour(kGrey, static_cast<std::size_t>(components)));
        _colours.take(*_run);
    }
    std::vector<float> values() { return elements<float>(_mesh.attributes[kColour].streams[kValues]); }
    int components() { return _mesh.attributes[kColour].components; }

    Mesh _mesh{Input::Consumed};
    std::unique_ptr<ObjRun> _run{new ObjRun};
    VertexColours _colours{_mesh};
};

TEST_F(VertexColoursTest, PositionsWithoutColoursMakeNoAttribute) {
    take(3, 0);
    take(0, 0);
    EXPECT_FALSE(_mesh.attributes.contains(kColour));
    EXPECT_EQ(_run->colours.size, 0U);
}

TEST_F(VertexColoursTest, ColoursHaveThreeComponentsWithoutAlpha) {
    take(2, 3);
    take(1, 3);
    EXPECT_EQ(components(), 3);
    EXPECT_EQ(values(), std::vector<float>(9, 0.5F));
    EXPECT_EQ(_run->colourComponents, 0) << "the run is ready for further lines";
}

TEST_F(VertexColoursTest, ColoursHaveFourComponentsWithAlpha) {
    take(2, 4);
    EXPECT_EQ(components(), 4);
    EXPECT_THAT(values(), ElementsAre(0.5F, 0.5F, 0.5F, 0.25F, 0.5F, 0.5F, 0.5F, 0.25F));
}

TEST_F(VertexColoursTest, PositionsWithoutAColourAreWhite) {
    take(2, 0);
    take(1, 3);
    take(1, 0);
    EXPECT_THAT(values(), ElementsAre(1, 1, 1, 1, 1, 1, 0.5F, 0.5F, 0.5F, 1, 1, 1));
}

TEST_F(VertexColoursTest, OnePositionWithAlphaGivesAlphaToAll) {
    take(1, 0);
    take(1, 3);
    take(1, 4);
    take(1, 3);
    EXPECT_EQ(components(), 4);
    EXPECT_THAT(values(),
                ElementsAre(1, 1, 1, 1, 0.5F, 0.5F, 0.5F, 1, 0.5F, 0.5F, 0.5F, 0.25F, 0.5F, 0.5F, 0.5F, 1));
}

TEST_F(VertexColoursTest, OneRunMayHaveAllLengths) {
    for (const std::size_t components : {0U, 4U, 3U})
        _run->addColour(ObjColour(kGrey, components));
    _colours.take(*_run);
    EXPECT_THAT(values(), ElementsAre(1, 1, 1, 1, 0.5F, 0.5F, 0.5F, 0.25F, 0.5F, 0.5F, 0.5F, 1));
}

TEST_F(VertexColoursTest, ColoursBeyondABlockAreWidenedToo) {
    for (const int extra : {-1, 0, 1}) {
        SCOPED_TRACE(extra);
        _mesh.clear();
        _mesh.attributes.create(kPosition, 3, kFloat, 0, 0);
        VertexColours colours(_mesh);
        const auto takeRun = [&](int positions, int components) {
            for (int i = 0; i < positions; ++i)
                _run->addColour(ObjColour(kGrey, static_cast<std::size_t>(components)));
            colours.take(*_run);
        };
        takeRun(kBlock, 0);
        takeRun(kBlock + extra - 1, 0);
        takeRun(1, 3);
        EXPECT_THAT(values(), SizeIs(3U * static_cast<unsigned int>(2 * kBlock + extra)));
        takeRun(1, 4);
        const std::vector<float> all = values();
        const std::size_t white = 4 * static_cast<std::size_t>(2 * kBlock + extra - 1);
        ASSERT_THAT(all, SizeIs(white + 8));
        EXPECT_THAT(std::vector<float>(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(white)),
                    Each(1.0F));
        EXPECT_THAT(std::vector<float>(all.end() - 8, all.end()),
                    ElementsAre(0.5F, 0.5F, 0.5F, 1, 0.5F, 0.5F, 0.5F, 0.25F));
    }
}

TEST_F(VertexColoursTest, ListIsThatOfThePositions) {
    take(3, 3);
    EXPECT_EQ(_mesh.attributes[kColour].streams[kIndices], _mesh.attributes[kPosition].streams[kIndices]);
    EXPECT_EQ(_mesh.attributes[kColour].listOwner, kPosition);
    take(1, 4);
    EXPECT_EQ(_mesh.attributes[kColour].streams[kIndices], _mesh.attributes[kPosition].streams[kIndices]);
}

// Colours that come late would otherwise end the merging of corners.
TEST_F(VertexColoursTest, CornersRemainMerged) {
    const std::vector<float> values(9);
    _mesh.attributes.addValues(kPosition, values.size(), values.data(), kFloat);
    std::vector<quint32> indices = {0, 1, 2};
    const CornerList list = {&kPosition, indices.data()};
    _mesh.attributes.addCorners(&list, 1, 3);
    ASSERT_NE(_mesh.attributes.mergedCorners(), nullptr);
    take(3, 3);
    ASSERT_NE(_mesh.attributes.mergedCorners(), nullptr);
    EXPECT_THAT(_mesh.attributes.mergedCorners()->attributes(), ElementsAre(kPosition));
    EXPECT_TRUE(_mesh.attributes.isComplete());
}

} // namespace
} // namespace Atelier::Vel
