#include "filterfixture.h"
#include "glfaults.h"

#include <velgl/drawfilter.h>

#include <gmock/gmock.h>

#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

#include "support/messagelog.h"

// The lists of commands that a drawable keeps for its filters, and their buffers.
namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;

class OrderedCommandsTest : public FilterFixture {};

} // namespace

INSTANTIATE_FOR_DRIVERS(OrderedCommandsTest);

TEST_P(OrderedCommandsTest, CommandsSideBySideNeedNoFurtherBuffer) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::red, Qt::green, Qt::blue});
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    const AutoBinder binder(_program.get());
    model.draw();
    const NameCount names;
    const DrawHook hook;
    for (const DrawOrder order : kOrders)
        for (const char* mask : {"0110", "1111"})
            model.draw(drawing(filterOf({mask}), order));
    EXPECT_EQ(names.made(), 0);
    EXPECT_GE(hook.calls().size(), 10U);
}

TEST_P(OrderedCommandsTest, FilterAppliesToChangedCommands) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red});
    const DrawFilter filter = filterOf({"101"});
    const DrawElementsIndirectCommand swapped[] = {cellCommand(1), cellCommand(0), cellCommand(2)};
    for (const DrawOrder order : kOrders) {
        const DrawOptions options = drawing(filter, order);
        DrawBuffers& row = *model.drawable(0);
        row.setDrawElementsIndirectCommands(swapped, 3);
        EXPECT_EQ(drawnWith(model, 3, options), opaque({Qt::black, Qt::red, Qt::red}));
        row.setDrawElementsIndirectCommands(swapped, 2);
        EXPECT_EQ(drawnWith(model, 3, options), opaque({Qt::black, Qt::red, Qt::black}));
        row.setDrawElementsIndirectCommands(nullptr, 0);
        EXPECT_EQ(drawnWith(model, 3, options), opaque({Qt::black, Qt::black, Qt::black}));
        DrawElementsIndirectCommand beyond = cellCommand(2);
        beyond.count = 1000;
        const DrawElementsIndirectCommand refused[] = {cellCommand(0), cellCommand(1), beyond};
        row.setDrawElementsIndirectCommands(refused, 3);
        const MessageLog log;
        EXPECT_EQ(drawnWith(model, 3, options), opaque({Qt::red, Qt::black, Qt::black}));
        EXPECT_EQ(log.texts(QtWarningMsg).size(), 1U) << "about the command beyond the indices";
    }
}

TEST_P(OrderedCommandsTest, PlanRegisteredAfterADrawIsUsedWithTheSameFilter) {
    static int count = 0;
    auto plan = std::make_unique<InstanceDataPlan>(QStringLiteral("LateFilterPlan%1").arg(count++));
    plan->addMember(InstanceDataPlan::DataType::Float, QStringLiteral("opacity"));
    plan->addMember(InstanceDataPlan::DataType::Texture, QStringLiteral("first"));
    plan->addMember(InstanceDataPlan::DataType::Vec3, QStringLiteral("color"));
    QList<InstanceData> materials;
    QList<InstanceData> instances;
    for (const QColor color : {Qt::red, Qt::green, Qt::blue}) {
        materials << coloredMaterial(Qt::white);
        materials.last().setTexture(QStringLiteral("first"), textureOf(color));
        instances << movedInstance({});
    }
    GPUModel model;
    model.add(triangleRow(3), 1, new InstanceDataCollection(plan->name(), materials),
              new InstanceDataCollection(QStringLiteral("TestInstance"), instances), 0);
    const DrawFilter filter = filterOf({"011"});
    drawnWith(model, 3, drawing(filter));
    InstanceDataRegistry::Instance().registerPlan(plan.release());
    EXPECT_EQ(drawnWith(model, 3, drawing(filter)), opaque({Qt::black, Qt::green, Qt::blue}));
}

TEST_P(OrderedCommandsTest, CopiesShareABufferThatIsFreedAfterTheLastOfThem) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red});
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    const AutoBinder binder(_program.get());
    model.draw(drawing({}, DrawOrder::ByTextures));
    const NameCount names;
    const int buffers = hasDrawParameters() ? 1 : 0;
    for (int round = 1; round <= 5; ++round) {
        const DrawFilter filter = filterOf({"101"});
        const DrawFilter copy = filter; // NOLINT(performance-unnecessary-copy-initialization): it is tested
        for (int frame = 0; frame < 3; ++frame) {
            model.draw(drawing(filter));
            model.draw(drawing(copy));
        }
        EXPECT_EQ(names.made(), round * buffers);
        EXPECT_EQ(names.imbalance().size(), buffers) << "those of earlier filters are deleted";
    }
}

TEST_P(OrderedCommandsTest, BufferThatCannotBeMadeIsReportedAndCommandsAreDrawnFromTheDefinedOne) {
    if (!hasDrawParameters())
        GTEST_SKIP() << "no further buffer is made";
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red, Qt::blue});
    drawnWith(model, 4, {});
    for (const DrawOrder order : kOrders) {
        const DrawOptions options = drawing(filterOf({"1011"}), order);
        const MessageLog log;
        for (int frame = 0; frame < 2; ++frame) {
            const FaultyDriver driver(GLFault::NoBufferMemory);
            EXPECT_EQ(drawnWith(model, 4, options), opaque({Qt::red, Qt::black, Qt::red, Qt::blue}));
        }
        EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre("Draw commands of 'drawable 0' could not be sorted "
                                                         "(GL_OUT_OF_MEMORY)"));
        EXPECT_EQ(drawnWith(model, 4, options), opaque({Qt::red, Qt::black, Qt::red, Qt::blue}));
        EXPECT_THAT(drawCounts(model, 4, options), ElementsAre(2, 1)) << "as soon as there is memory";
    }
}

TEST_P(OrderedCommandsTest, EachContextDrawsWhatPasses) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red});
    const DrawOptions options = drawing(filterOf({"101"}));
    EXPECT_EQ(drawnWith(model, 3, options), opaque({Qt::red, Qt::black, Qt::red}));
    OpenGLDeviceContext::HeadlessOptions plain = this->options();
    plain.drawParameters = false;
    plain.shareWith = _context;
    const auto other = makeContext(plain);
    ASSERT_TRUE(other->makeCurrent());
    const std::unique_ptr<Program> mine = std::exchange(_program, sceneProgram());
    EXPECT_EQ(drawnWith(model, 3, options), opaque({Qt::red, Qt::black, Qt::red}));
    EXPECT_THAT(drawCounts(model, 3, options), ElementsAre(1, 1));
    _program.reset();
    _context->makeCurrent();
}

} // namespace Atelier::Vel::Testing
