#include "modelpoints.h"

#include <limits>
#include <type_traits>

#include <gmock/gmock.h>

#include <velgl/drawbuffers.h>
#include <velmodel/modelbuilder.h>

#include "mixedmodel.h"
#include "support/glfixture.h"

namespace Atelier::Vel::Tool {

namespace {

constexpr unsigned int kFloat = 0x1406;
constexpr unsigned int kUnsignedInt = 0x1405;
constexpr unsigned int kStaticDraw = 0x88E4;
constexpr unsigned int kTriangles = 4;

class ModelPointsTest : public Testing::GLFixture {};

// One face over the first three of some positions, in the attribute `name`.
template<typename Number>
std::unique_ptr<GPUModel> modelOf(const std::vector<Number>& values, const QString& name = "va_Vertex",
                                  int components = 3) {
    constexpr unsigned int kType = std::is_same_v<Number, float> ? kFloat : kUnsignedInt;
    ModelBuilder builder;
    builder.createVertexAttribute(name, components, kType, 0, 0);
    builder.addValuesToVertexAttribute(name, values.size(), values.data(), kType);
    for (unsigned int index = 0; index < values.size() / unsigned(components); ++index)
        builder.addIndicesToVertexAttribute(name, 1, &index);
    const unsigned int counts[] = {3, unsigned(values.size()) / unsigned(components) - 3};
    builder.addVertexCountsToFaces(counts[1] > 0 ? 2 : 1, counts);
    constexpr unsigned int kFirstFace = 0;
    builder.createMaterialGroup("m", InstanceData("OBJMaterial"), -1, 0);
    builder.addFacesToMaterialGroup("m", 1, &kFirstFace, QString());
    auto model = std::make_unique<GPUModel>();
    builder.upload(model.get(), InstanceData("InstanceInfo"), name, QString(), kStaticDraw, kTriangles);
    EXPECT_EQ(model->drawableCount(), 1);
    return model;
}

TEST_F(ModelPointsTest, PointsOnTheBoundsAreInside) {
    const auto model = modelOf<float>({0, 0, 0, 4, 0, 2, 0, 3, 1});
    EXPECT_EQ(pointsInBounds(*model), (QVector<QVector3D>{{0, 0, 0}, {4, 0, 2}, {0, 3, 1}}));
}

TEST_F(ModelPointsTest, UnusedPointsAreOmittedUnlessTheyAreInside) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const auto model =
        modelOf<float>({0,     0,     0, 4,    4,    4, 0, 4, 0, // drawn
                        1,     2,     3,                         // inside
                        -0.5F, 1,     1, 4.5F, 1,    1,          // outside on each side
                        1,     -0.5F, 1, 1,    4.5F, 1, 1, 1, -0.5F, 1, 1, 4.5F, nan, 1, 1, 1, 1, nan});
    EXPECT_EQ(pointsInBounds(*model), (QVector<QVector3D>{{0, 0, 0}, {4, 4, 4}, {0, 4, 0}, {1, 2, 3}}));
}

TEST_F(ModelPointsTest, PointsOfAllCommandsAreThoseInTheBounds) {
    const auto model = modelOf<float>({0, 0, 0, 4, 0, 2, 0, 3, 1, 1, 1, 1});
    const ShownPoints shown = shownPoints(*model, DrawFilter());
    EXPECT_EQ(shown.points, pointsInBounds(*model));
    EXPECT_EQ(shown.points.size(), 4);
    EXPECT_EQ(shown.bounds.maximum, model->bounds().maximum);
}

TEST_F(ModelPointsTest, PointsOfSomeCommandsAreThoseTheyUse) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    ModelBuilder builder;
    const QString positions = "va_Vertex";
    builder.createVertexAttribute(positions, 3, kFloat, 0, 0);
    const std::vector<float> values = {1, 2, 3, 4, 0, 2, 0, 3, 1, 9, 9, 9, nan, 0, 0, -1, -2, -3};
    builder.addValuesToVertexAttribute(positions, values.size(), values.data(), kFloat);
    const unsigned int corners[] = {0, 1, 2, 3, 4, 5};
    builder.addIndicesToVertexAttribute(positions, 6, corners);
    const unsigned int counts[] = {3, 3};
    builder.addVertexCountsToFaces(2, counts);
    for (const unsigned int face : {0U, 1U}) {
        const QString group = QString::number(face);
        builder.createMaterialGroup(group, InstanceData("OBJMaterial"), int(face), 0);
        builder.addFacesToMaterialGroup(group, 1, &face, QString());
    }
    GPUModel model;
    builder.upload(&model, InstanceData("InstanceInfo"), positions, QString(), kStaticDraw, kTriangles);
    const auto only = [&](int wanted) {
        return shownPoints(
            model, DrawFilter(model, [&](int /*drawable*/, int command) { return command == wanted; }));
    };
    EXPECT_EQ(only(0).points, (QVector<QVector3D>{{1, 2, 3}, {4, 0, 2}, {0, 3, 1}}));
    EXPECT_EQ(only(0).bounds.minimum, QVector3D(0, 0, 1));
    EXPECT_EQ(only(0).bounds.maximum, QVector3D(4, 3, 3));
    EXPECT_EQ(only(1).points, (QVector<QVector3D>{{9, 9, 9}, {-1, -2, -3}}));
    EXPECT_EQ(only(1).bounds.minimum, QVector3D(-1, -2, -3));
    EXPECT_TRUE(only(1).bounds.isValid);
    EXPECT_FALSE(only(2).bounds.isValid);
    EXPECT_TRUE(only(2).points.isEmpty());
}

TEST_F(ModelPointsTest, PointsAreCountedFromTheFirstVertexOfTheirCommand) {
    const auto model = modelOf<float>({7, 7, 7, 1, 0, 0, 0, 2, 0, 0, 0, 3});
    DrawBuffers& drawable = *model->drawable(0);
    QVector<DrawElementsIndirectCommand> commands = drawable.drawElementsIndirectCommands();
    commands[0].baseVertex = 1;
    drawable.setDrawElementsIndirectCommands(commands.constData(), commands.size());
    const DrawFilter first(*model, [](int /*drawable*/, int command) { return command == 0; });
    EXPECT_EQ(shownPoints(*model, first).points, (QVector<QVector3D>{{1, 0, 0}, {0, 2, 0}, {0, 0, 3}}));
}

TEST_F(ModelPointsTest, ModelWithoutPositionsGivesTheCornersOfItsBox) {
    GPUModel empty;
    EXPECT_EQ(pointsInBounds(empty), cornersOf({}));
    EXPECT_EQ(pointsInBounds(*modelOf<float>({0, 0, 0, 4, 4, 4, 0, 4, 0}, "va_Other")), cornersOf({}));
}

TEST_F(ModelPointsTest, PositionsOfOtherKindsAreNotRead) {
    const auto flat = modelOf<float>({1, 1, 4, 4, 1, 4}, "va_Vertex", 2);
    EXPECT_EQ(pointsInBounds(*flat), cornersOf(flat->bounds()));
    const auto integers = modelOf<unsigned int>({1, 1, 1, 4, 4, 4, 1, 4, 1});
    EXPECT_EQ(pointsInBounds(*integers), cornersOf(integers->bounds()));
}

TEST_F(ModelPointsTest, PositionsAreFoundAmongOtherStreams) {
    const QVector<QVector3D> points = pointsInBounds(*Testing::mixedModel());
    ASSERT_EQ(points.size(), 8) << "the first four points are not drawn";
    EXPECT_EQ(points.first(), QVector3D(8, 9, 10));
}

TEST(CornersTest, AreAllEight) {
    EXPECT_EQ(cornersOf({{1, 2, 3}, {4, 5, 6}, true}),
              (QVector<QVector3D>{
                  {1, 2, 3}, {4, 2, 3}, {1, 5, 3}, {4, 5, 3}, {1, 2, 6}, {4, 2, 6}, {1, 5, 6}, {4, 5, 6}}));
}

} // namespace

} // namespace Atelier::Vel::Tool
