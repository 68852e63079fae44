#include "filterfixture.h"

#include <velgl/shaderinterface.h>

#include <limits>

#include <gmock/gmock.h>

#include "support/messagelog.h"

// Drawables with several instances of each command.
namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;
using testing::SizeIs;

// Takes the place of an instance by its number, not by that of its command.
const char kVertexShader[] = R"(
in vec3 va_Vertex;
flat out int command;
void main() {
    command = velglCommand();
    gl_Position = velglInstance(velglInstanceNumber()).placement * vec4(va_Vertex, 1.0);
}
)";

class InstancesTest : public FilterFixture {
protected:
    static constexpr int kCells = 6;

    void SetUp() override {
        FilterFixture::SetUp();
        const ShaderPlans plans{QStringLiteral("TestMaterial"), QStringLiteral("TestInstance")};
        const QByteArray version = "#version 430 core\n";
        QString error;
        _program = Program::fromSource(
            version + shaderInterface(ShaderStage::Vertex, plans) + kVertexShader,
            version + shaderInterface(ShaderStage::Fragment, plans) + kSceneFragmentShader, error);
        ASSERT_TRUE(_program) << error.toStdString();
    }

    // An instance that moves cell 0 to `cell`.
    static InstanceData inCell(int cell) { return movedInstance({2.0F * float(cell) / float(kCells), 0, 0}); }
    // Adds commands that all draw cell 0, of these colours.
    static void add(GPUModel& model, const QList<QColor>& colors, int instanceCount,
                    const QList<InstanceData>& instances) {
        DrawBuffers* row = triangleRow(kCells);
        const QVector<DrawElementsIndirectCommand> commands(colors.size(), cellCommand(0));
        row->setDrawElementsIndirectCommands(commands.constData(), commands.size());
        QList<InstanceData> materials;
        for (const QColor& color : colors)
            materials << coloredMaterial(color);
        model.add(row, instanceCount, new InstanceDataCollection(QStringLiteral("TestMaterial"), materials),
                  new InstanceDataCollection(QStringLiteral("TestInstance"), instances), 0);
    }
};

} // namespace

INSTANTIATE_FOR_DRIVERS(InstancesTest);

TEST_P(InstancesTest, EachInstanceOfEachCommandHasItsOwnItem) {
    GPUModel model;
    add(model, opaque({Qt::red, Qt::green}), 3,
        {inCell(0), inCell(2), inCell(4), inCell(1), inCell(3), inCell(5)});
    const QList<QColor> alternating = opaque({Qt::red, Qt::green, Qt::red, Qt::green, Qt::red, Qt::green});
    for (const DrawOrder order : kOrders)
        EXPECT_EQ(drawnWith(model, kCells, drawing({}, order)), alternating);
    const DrawHook hook;
    EXPECT_EQ(drawnColors(model, kCells), alternating);
    EXPECT_THAT(hook.calls(), SizeIs(hasDrawParameters() ? 1 : 2)) << "not one for each instance";
}

TEST_P(InstancesTest, FiltersAndHiddenCommandsKeepTheNumbersOfInstances) {
    GPUModel model;
    add(model, opaque({Qt::red, Qt::green, Qt::blue}), 2,
        {inCell(0), inCell(1), inCell(2), inCell(3), inCell(4), inCell(5)});
    const DrawFilter filter = filterOf({"101"});
    for (const DrawOrder order : kOrders)
        EXPECT_EQ(drawnWith(model, kCells, drawing(filter, order)),
                  opaque({Qt::red, Qt::red, Qt::black, Qt::black, Qt::blue, Qt::blue}));
    model.drawable(0)->setVisibility(0, DrawBuffers::Visibility::Hidden);
    EXPECT_EQ(drawnColors(model, kCells),
              opaque({Qt::black, Qt::black, Qt::green, Qt::green, Qt::blue, Qt::blue}));
    model.instances(0)->set(3, inCell(0));
    EXPECT_EQ(drawnColors(model, kCells),
              opaque({Qt::green, Qt::black, Qt::green, Qt::black, Qt::blue, Qt::blue}));
}

TEST_P(InstancesTest, MissingItemsAreZeros) {
    GPUModel model;
    add(model, opaque({Qt::red, Qt::green}), 3, {inCell(0), inCell(2), inCell(4), inCell(1)});
    EXPECT_EQ(drawnColors(model, kCells),
              opaque({Qt::red, Qt::green, Qt::red, Qt::black, Qt::red, Qt::black}));
    EXPECT_EQ(model.instances(0)->readBack(), model.instances(0)->packed() + QByteArray(2 * 64, '\0'));
}

TEST_P(InstancesTest, OneInstanceHasTheItemOfItsCommand) {
    GPUModel model;
    add(model, opaque({Qt::red, Qt::green}), 1, {inCell(3), inCell(1)});
    EXPECT_EQ(drawnColors(model, kCells),
              opaque({Qt::black, Qt::green, Qt::black, Qt::red, Qt::black, Qt::black}));
    EXPECT_EQ(model.instances(0)->readBack(), model.instances(0)->packed());
}

TEST_P(InstancesTest, InstancesOfACommandOfItsOwnHaveTheLastItem) {
    GPUModel model;
    add(model, opaque({Qt::red, Qt::green}), 2, {inCell(0), inCell(1), inCell(2), inCell(3)});
    QVector<DrawElementsIndirectCommand> commands = model.drawable(0)->drawElementsIndirectCommands();
    commands[0].instanceCount = 6;
    model.drawable(0)->setDrawElementsIndirectCommands(commands.constData(), commands.size());
    EXPECT_EQ(drawnColors(model, kCells),
              opaque({Qt::red, Qt::red, Qt::green, Qt::green, Qt::black, Qt::black}));
}

TEST_P(InstancesTest, DrawablesWithDifferentCountsAreDrawnOneAfterTheOther) {
    GPUModel model;
    add(model, opaque({Qt::red}), 2, {inCell(0), inCell(1)});
    add(model, opaque({Qt::green, Qt::blue}), 1, {inCell(2), inCell(3)});
    add(model, opaque({Qt::yellow}), 0, {inCell(4)});
    add(model, opaque({Qt::cyan}), 1, {inCell(5)});
    const QList<QColor> expected = opaque({Qt::red, Qt::red, Qt::green, Qt::blue, Qt::black, Qt::cyan});
    for (int frame = 0; frame < 2; ++frame)
        EXPECT_EQ(drawnColors(model, kCells), expected);
}

TEST_P(InstancesTest, DrawableThatIsDrawnAloneNumbersItsInstances) {
    GPUModel model;
    add(model, opaque({Qt::red, Qt::green}), 2, {inCell(0), inCell(1), inCell(2), inCell(3)});
    add(model, opaque({Qt::blue}), 1, {inCell(5)});
    drawnColors(model, kCells);
    ASSERT_TRUE(model.materials(0)->bindStorage(kMaterialsBinding));
    ASSERT_TRUE(model.instances(0)->bindStorage(kInstancesBinding));
    EXPECT_EQ(drawnColors(*model.drawable(0), kCells, 0, 2),
              opaque({Qt::red, Qt::red, Qt::green, Qt::green, Qt::black, Qt::black}));
}

TEST_P(InstancesTest, MoreInstancesThanABufferHoldsAreReportedOnceAndNotDrawn) {
    const MessageLog log;
    GPUModel model;
    add(model, opaque({Qt::red, Qt::green}), std::numeric_limits<int>::max(), {inCell(0)});
    for (int frame = 0; frame < 3; ++frame)
        EXPECT_EQ(drawnColors(model, 1), opaque({Qt::black}));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre("4294967294 items of 'TestInstance' are too many for one buffer"));
}

} // namespace Atelier::Vel::Testing
