#include "geometry/triangulation/facetriangulator.h"

#include <numeric>
#include <vector>

#include <gmock/gmock.h>

#include "support/guardedarray.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using Testing::GuardedArray;

/// Faces of the given sizes over the corners of a unit square, one after the other, and one more position.
class FaceTriangulatorTest : public testing::Test {
protected:
    void make(const std::vector<quint32>& counts) {
        std::vector<quint32> starts;
        std::vector<quint32> corners;
        for (const quint32 count : counts) {
            starts.push_back(static_cast<quint32>(corners.size()));
            for (quint32 corner = 0; corner < count; ++corner)
                corners.push_back(corner % 4);
        }
        _counts = GuardedArray<quint32>(counts);
        _starts = GuardedArray<quint32>(starts);
        _corners = GuardedArray<quint32>(corners);
        _table = {{_counts.data(), _counts.size()},
                  _starts.data(),
                  _starts.size(),
                  {},
                  {_corners.data(), _corners.size()},
                  {reinterpret_cast<unsigned char*>(_positions.data()), _positions.size() * sizeof(float)}};
    }
    /// The sizes of the batches of all faces that `faces` lists.
    std::vector<quint32> batches(const std::vector<quint32>& faces) {
        const GuardedArray<quint32> list(faces);
        std::vector<quint32> sizes;
        for (quint64 k = 0; k < faces.size();) {
            sizes.push_back(FaceTriangulator::batchAt(_table, {list.data(), list.size()}, k).faceCount);
            k += sizes.back();
        }
        return sizes;
    }
    std::vector<quint32> allFaces() const {
        std::vector<quint32> faces(_table.counts.count);
        std::iota(faces.begin(), faces.end(), 0U);
        return faces;
    }
    /// Triangulates one batch into an array of exactly its size.
    std::vector<unsigned int> triangles(const std::vector<quint32>& faces) {
        const GuardedArray<quint32> list(faces);
        const FaceBatch batch = FaceTriangulator::batchAt(_table, {list.data(), list.size()}, 0);
        const GuardedArray<unsigned int> out(batch.maxIndices());
        FaceTriangulator triangulator;
        return {out.begin(), triangulator.triangulate(_table, batch, out.data())};
    }

    FaceTable _table;

private:
    GuardedArray<quint32> _counts{};
    GuardedArray<quint32> _starts{};
    GuardedArray<quint32> _corners{};
    GuardedArray<float> _positions{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 0};
};

TEST_F(FaceTriangulatorTest, FourConsecutiveTrianglesOrQuadrilateralsAreOneBatch) {
    for (const quint32 count : {3U, 4U}) {
        make(std::vector<quint32>(9, count));
        EXPECT_THAT(batches(allFaces()), ElementsAre(4, 4, 1)) << count;
        EXPECT_THAT(batches({1, 2, 3, 4}), ElementsAre(4));
        EXPECT_THAT(batches({3, 2, 1, 0}), ElementsAre(1, 1, 1, 1)) << "not in the order of the corners";
        EXPECT_THAT(batches({6, 7, 8, 9}), ElementsAre(1, 1, 1, 1)) << "the last one does not exist";
    }
}

TEST_F(FaceTriangulatorTest, OtherFacesAreBatchesOfOne) {
    make(std::vector<quint32>(4, 5));
    EXPECT_THAT(batches(allFaces()), ElementsAre(1, 1, 1, 1));
    make({3, 3, 4, 3, 3, 3, 3});
    EXPECT_THAT(batches(allFaces()), ElementsAre(1, 1, 1, 4));
}

TEST_F(FaceTriangulatorTest, FacesAtTheLastPositionAreBatchesOfOne) {
    make({3, 3, 3, 3});
    _table.positions.count -= 12; // the square is all that is left
    EXPECT_THAT(batches(allFaces()), ElementsAre(4)) << "corner 3 is not used";
    make({4, 4, 4, 4});
    _table.positions.count -= 12;
    EXPECT_THAT(batches(allFaces()), ElementsAre(1, 1, 1, 1));
}

TEST_F(FaceTriangulatorTest, BatchGivesTheTrianglesOfItsFacesInTheirOrder) {
    make({3, 3, 3, 3});
    EXPECT_THAT(triangles(allFaces()), ElementsAre(0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2));
    make({4});
    EXPECT_THAT(triangles({0}), ElementsAre(0, 1, 3, 1, 2, 3));
}

TEST_F(FaceTriangulatorTest, FaceThatDoesNotExistIsABatchWithoutCorners) {
    make({3, 0});
    const auto batchOf = [this](quint32 face) { return FaceTriangulator::batchAt(_table, {&face, 1}, 0); };
    EXPECT_FALSE(batchOf(2).corners.exist);
    EXPECT_EQ(batchOf(2).maxIndices(), 0U);
    EXPECT_TRUE(batchOf(1).corners.exist) << "without corners, but it is there";
    EXPECT_TRUE(triangles({2}).empty());
    EXPECT_TRUE(triangles({1}).empty());
    _table.corners.count = 2;
    EXPECT_FALSE(batchOf(0).corners.exist) << "its corners are not";
}

} // namespace
} // namespace Atelier::Vel
