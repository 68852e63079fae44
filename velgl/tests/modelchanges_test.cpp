#include <epoxy/gl.h>

#include <velgl/gpumodel.h>

#include <gmock/gmock.h>

#include <velgl/bufferobject.h>
#include <velgl/instancedatacollection.h>
#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>
#include <velgl/texture.h>
#include <velgl/vertexarrayobject.h>

#include "scenefixture.h"
#include "support/messagelog.h"

// Models that change between their draws.
namespace Atelier::Vel::Testing {

namespace {

using DataType = InstanceDataPlan::DataType;

class ModelChangesTest : public SceneFixture {};

void setCommands(DrawBuffers& buffers, const QVector<DrawElementsIndirectCommand>& commands) {
    buffers.setDrawElementsIndirectCommands(commands.constData(), commands.size());
}

} // namespace

INSTANTIATE_FOR_DRIVERS(ModelChangesTest);

TEST_P(ModelChangesTest, ChangedNumberOfCommandsFindsItsMaterials) {
    GPUModel model;
    addRow(model, opaque({Qt::red, Qt::green, Qt::blue}));
    DrawBuffers& row = *model.drawable(0);
    EXPECT_EQ(drawnColors(model, 3), opaque({Qt::red, Qt::green, Qt::blue}));
    setCommands(row, {cellCommand(2)});
    EXPECT_EQ(drawnColors(model, 3), opaque({Qt::black, Qt::black, Qt::red}));
    setCommands(row, {});
    EXPECT_EQ(drawnColors(model, 3), opaque({Qt::black, Qt::black, Qt::black}));
    setCommands(row, {cellCommand(1), cellCommand(0), cellCommand(2)});
    EXPECT_EQ(drawnColors(model, 3), opaque({Qt::green, Qt::red, Qt::blue}));
}

TEST_P(ModelChangesTest, CommandsAddedAfterADrawReadZerosBeyondTheItems) {
    GPUModel model;
    auto* row = triangleRow(3);
    setCommands(*row, {cellCommand(0)});
    model.add(row, 1, new InstanceDataCollection(QStringLiteral("TestMaterial"), {coloredMaterial(Qt::red)}),
              new InstanceDataCollection(QStringLiteral("TestInstance"),
                                         {movedInstance({}), movedInstance({}), movedInstance({})}),
              0);
    EXPECT_EQ(drawnColors(model, 3), opaque({Qt::red, Qt::black, Qt::black}));
    setCommands(*row, {cellCommand(0), cellCommand(1), cellCommand(2)});
    const QColor nothing(0, 0, 0, 0);
    EXPECT_EQ(drawnColors(model, 3), (QList<QColor>{Qt::red, nothing, nothing}));
    EXPECT_EQ(model.materials(0)->readBack().size(), 96);
}

TEST_P(ModelChangesTest, DrawableAddedAfterADrawIsDrawn) {
    GPUModel model;
    addRow(model, opaque({Qt::red, Qt::green}));
    EXPECT_EQ(drawnColors(model, 2), opaque({Qt::red, Qt::green}));
    addRow(model, opaque({Qt::blue, Qt::yellow}));
    EXPECT_EQ(drawnColors(model, 2), opaque({Qt::blue, Qt::yellow})) << "it covers the first one";
}

TEST_P(ModelChangesTest, StreamReplacedAfterADrawIsRead) {
    GPUModel model;
    addRow(model, opaque({Qt::red, Qt::green}));
    EXPECT_EQ(drawnColors(model, 2), opaque({Qt::red, Qt::green}));
    const std::unique_ptr<DrawBuffers> other(triangleRow(4));
    model.drawable(0)->VAO()->registerBO(QStringLiteral("va_Vertex"), other->VAO()->streams()[0].buffer, 3,
                                         GL_FLOAT);
    EXPECT_EQ(drawnColors(model, 4), opaque({Qt::red, Qt::green, Qt::black, Qt::black}));
}

// Until then the drawable leaves the binding point and the units to the client.
TEST_P(ModelChangesTest, PlanRegisteredAfterADrawIsUsed) {
    static int count = 0;
    auto plan = std::make_unique<InstanceDataPlan>(QStringLiteral("LatePlan%1").arg(count++));
    plan->addMember(DataType::Float, QStringLiteral("opacity"));
    plan->addMember(DataType::Texture, QStringLiteral("first"));
    plan->addMember(DataType::Vec3, QStringLiteral("color"));
    InstanceDataCollection clients(QStringLiteral("TestMaterial"), {coloredMaterial(Qt::yellow)});
    ASSERT_TRUE(clients.bindStorage(0));
    const std::unique_ptr<Texture> cyan = Texture::ofColor(Qt::cyan);
    InstanceData material = coloredMaterial(Qt::white);
    material.setTexture(QStringLiteral("first"), cyan.get());
    GPUModel model;
    model.add(triangleRow(1), 1, new InstanceDataCollection(plan->name(), {material}),
              new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({})}), 0);
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::yellow}));
    InstanceDataRegistry::Instance().registerPlan(plan.release());
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::cyan}));
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::cyan}));
}

TEST_P(ModelChangesTest, EmptiedBufferDrawsNothingUntilItIsFilledAgain) {
    GPUModel model;
    addRow(model, opaque({Qt::red, Qt::green}));
    EXPECT_EQ(drawnColors(model, 2), opaque({Qt::red, Qt::green}));
    const QSharedPointer<BufferObject> positions = model.drawable(0)->VAO()->streams()[0].buffer;
    const QByteArray content = positions->readBack();
    ASSERT_TRUE(positions->uploadArbitraryData(nullptr, 0, GL_STATIC_DRAW, 1));
    EXPECT_EQ(drawnColors(model, 2), opaque({Qt::black, Qt::black}));
    ASSERT_TRUE(positions->uploadArbitraryData(content.constData(), content.size(), GL_STATIC_DRAW, 1));
    EXPECT_EQ(drawnColors(model, 2), opaque({Qt::red, Qt::green}));
}

} // namespace Atelier::Vel::Testing
