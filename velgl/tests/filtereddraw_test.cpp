#include "filterfixture.h"

#include <velgl/drawfilter.h>

#include <limits>
#include <random>

#include <gmock/gmock.h>

// Draws of a part of the commands.
namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FilteredDrawTest : public FilterFixture {};

} // namespace

INSTANTIATE_FOR_DRIVERS(FilteredDrawTest);

TEST_P(FilteredDrawTest, CommandsThatPassAreDrawnWithTheirOwnMaterialsAndTextures) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red, Qt::blue, Qt::green, Qt::red});
    const DrawFilter filter = filterOf({"101011"});
    for (const DrawOrder order : kOrders)
        for (int frame = 0; frame < 2; ++frame)
            EXPECT_EQ(drawnWith(model, 6, drawing(filter, order)),
                      opaque({Qt::red, Qt::black, Qt::red, Qt::black, Qt::green, Qt::red}));
    EXPECT_EQ(drawnWith(model, 6, {}), opaque({Qt::red, Qt::green, Qt::red, Qt::blue, Qt::green, Qt::red}))
        << "without a filter again";
}

TEST_P(FilteredDrawTest, CommandsOfOneSetAreDrawnAtOnceAcrossHiddenOnes) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red, Qt::blue, Qt::green, Qt::red});
    const DrawFilter filter = filterOf({"101011"});
    const std::vector<int> asGiven = drawCounts(model, 6, drawing(filter));
    const std::vector<int> byTextures = drawCounts(model, 6, drawing(filter, DrawOrder::ByTextures));
    if (hasDrawParameters()) {
        EXPECT_THAT(asGiven, ElementsAre(2, 1, 1));
        EXPECT_THAT(byTextures, ElementsAre(3, 1));
    } else {
        EXPECT_THAT(asGiven, ElementsAre(1, 1, 1, 1));
        EXPECT_THAT(byTextures, ElementsAre(1, 1, 1, 1));
    }
}

TEST_P(FilteredDrawTest, NumbersOfCommandsStay) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red, Qt::green, Qt::red});
    const std::unique_ptr<Program> numbers = commandProgram();
    for (const DrawOrder order : kOrders)
        for (const char* mask : {"10101", "01001", "00110", "11111", "00001"}) {
            DrawOptions options = drawing(filterOf({mask}), order);
            options.program = numbers.get();
            const QList<QColor> colors = drawnWith(model, 5, options);
            for (int command = 0; command < 5; ++command)
                EXPECT_EQ(colors[command].red(), mask[command] == '1' ? 10 * (command + 1) : 0) << mask;
        }
}

TEST_P(FilteredDrawTest, FilterMayChangeBetweenFrames) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red});
    const DrawFilter odd = filterOf({"101"});
    const DrawFilter even = filterOf({"010"});
    for (int frame = 0; frame < 3; ++frame)
        for (const DrawOrder order : kOrders) {
            EXPECT_EQ(drawnWith(model, 3, drawing(odd, order)), opaque({Qt::red, Qt::black, Qt::red}));
            EXPECT_EQ(drawnWith(model, 3, drawing(even, order)), opaque({Qt::black, Qt::green, Qt::black}));
            EXPECT_EQ(drawnWith(model, 3, drawing({}, order)), opaque({Qt::red, Qt::green, Qt::red}));
        }
    DrawFilter assigned = odd;
    EXPECT_EQ(drawnWith(model, 3, drawing(assigned)), opaque({Qt::red, Qt::black, Qt::red}));
    assigned = even;
    EXPECT_EQ(drawnWith(model, 3, drawing(assigned)), opaque({Qt::black, Qt::green, Qt::black}));
}

TEST_P(FilteredDrawTest, NothingIsDrawnWhereNothingPasses) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green});
    addTextured(model, {Qt::blue, Qt::black});
    for (const DrawOrder order : kOrders) {
        EXPECT_EQ(drawnWith(model, 2, drawing(filterOf({"00", "00"}), order)),
                  opaque({Qt::black, Qt::black}));
        EXPECT_THAT(drawCounts(model, 2, drawing(filterOf({"00", "00"}), order)), IsEmpty());
        EXPECT_THAT(drawCounts(model, 2, drawing(filterOf({"00", "01"}), order)), ElementsAre(1));
        EXPECT_EQ(drawnWith(model, 2, drawing(filterOf({"00", "01"}), order)),
                  opaque({Qt::black, Qt::white}));
    }
}

TEST_P(FilteredDrawTest, MasksMayBeShorterOrLongerThanTheCommands) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red});
    addTextured(model, {Qt::black, Qt::blue});
    for (const DrawOrder order : kOrders) {
        EXPECT_EQ(drawnWith(model, 6, drawing(filterOf({"0", "01110111", "000"}), order)),
                  opaque({Qt::black, Qt::black, Qt::green, Qt::blue, Qt::blue, Qt::blue}));
        EXPECT_EQ(drawnWith(model, 6, drawing(filterOf({"000"}), order)),
                  opaque({Qt::white, Qt::white, Qt::white, Qt::blue, Qt::blue, Qt::blue}));
    }
}

TEST_P(FilteredDrawTest, DrawablesOfOneKeyAreDrawn) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::red}, 1);
    addTextured(model, {Qt::green}, 2);
    const auto filterOfKey = [&](quint64 key) {
        return DrawFilter(model, [&model, key](int drawable, int) { return model.key(drawable) == key; });
    };
    EXPECT_EQ(drawnWith(model, 1, drawing(filterOfKey(1))), opaque({Qt::red}));
    EXPECT_EQ(drawnWith(model, 1, drawing(filterOfKey(2))), opaque({Qt::green}));
    EXPECT_EQ(drawnWith(model, 1, drawing(filterOfKey(3))), opaque({Qt::black}));
}

TEST_P(FilteredDrawTest, FilterOfAKeyPassesItsDrawables) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::red}, 1);
    addTextured(model, {Qt::green}, quint64(1) << 40);
    EXPECT_EQ(drawnWith(model, 1, drawing(DrawFilter::ofKey(model, 1))), opaque({Qt::red}));
    EXPECT_EQ(drawnWith(model, 1, drawing(DrawFilter::ofKey(model, quint64(1) << 40))), opaque({Qt::green}));
    EXPECT_EQ(drawnWith(model, 1, drawing(DrawFilter::ofKey(model, 0))), opaque({Qt::black}));
    const DrawFilter first = DrawFilter::ofKey(model, 1);
    addTextured(model, {Qt::blue}, 7);
    EXPECT_EQ(drawnWith(model, 1, drawing(first)), opaque({Qt::blue})) << "it was added later";
    EXPECT_TRUE(model.remove(0));
    EXPECT_FALSE(DrawFilter::ofKey(model, 1).passes(1, 0));
    EXPECT_FALSE(DrawFilter::ofKey(model, 1).passesAll());
}

TEST_P(FilteredDrawTest, EachCommandIsEitherOpaqueOrTransparent) {
    const QString opacity = QStringLiteral("opacity");
    const auto material = [&](float value) {
        InstanceData result = coloredMaterial(Qt::red);
        result.set(opacity, &value, sizeof value);
        return result;
    };
    InstanceData wrong = coloredMaterial(Qt::red);
    wrong.set(QStringLiteral("d"), "ab", 2);
    GPUModel model;
    model.add(triangleRow(7), 1,
              new InstanceDataCollection(QStringLiteral("TestMaterial"),
                                         {material(1), material(0.999F), material(0), material(2),
                                          material(std::numeric_limits<float>::quiet_NaN()), wrong}),
              nullptr, 0);
    model.add(triangleRow(1), 1, nullptr, nullptr, 0);
    const DrawFilter opaques = DrawFilter::ofOpacity(model, DrawFilter::Opacity::Opaque, opacity);
    const DrawFilter transparent = DrawFilter::ofOpacity(model, DrawFilter::Opacity::Transparent, opacity);
    for (int command = 0; command < 7; ++command) {
        EXPECT_EQ(opaques.passes(0, command), command != 1 && command != 2) << command;
        EXPECT_NE(opaques.passes(0, command), transparent.passes(0, command)) << command;
    }
    EXPECT_TRUE(opaques.passes(1, 0)) << "without materials";
    EXPECT_FALSE(transparent.passes(1, 0));
    EXPECT_TRUE(DrawFilter::ofOpacity(model, DrawFilter::Opacity::Opaque).passes(0, 5))
        << "a value of 2 bytes";
    model.materials(0)->set(0, material(0.5F));
    EXPECT_TRUE(DrawFilter::ofOpacity(model, DrawFilter::Opacity::Transparent, opacity).passes(0, 0));
}

TEST_P(FilteredDrawTest, CommandsWithBaseInstancesAreDrawnFromTheDefinedBuffer) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red, Qt::red});
    QVector<DrawElementsIndirectCommand> commands = model.drawable(0)->drawElementsIndirectCommands();
    commands[1].baseInstance = 7;
    model.drawable(0)->setDrawElementsIndirectCommands(commands.constData(), commands.size());
    for (const DrawOrder order : kOrders) {
        const DrawOptions options = drawing(filterOf({"1011"}), order);
        EXPECT_EQ(drawnWith(model, 4, options), opaque({Qt::red, Qt::black, Qt::red, Qt::red}));
        EXPECT_EQ(drawCounts(model, 4, options),
                  hasDrawParameters() ? std::vector<int>({1, 2}) : std::vector<int>({1, 1, 1}));
    }
}

TEST_P(FilteredDrawTest, DefinedBufferOfCommandsStaysAsItIs) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red});
    const QVector<DrawElementsIndirectCommand> before = model.drawable(0)->readBackCommands();
    for (const DrawOrder order : kOrders)
        drawnWith(model, 3, drawing(filterOf({"101"}), order));
    const QVector<DrawElementsIndirectCommand> after = model.drawable(0)->readBackCommands();
    ASSERT_EQ(after.size(), before.size());
    for (int i = 0; i < after.size(); ++i) {
        EXPECT_EQ(after[i].count, before[i].count);
        EXPECT_EQ(after[i].instanceCount, before[i].instanceCount);
        EXPECT_EQ(after[i].firstIndex, before[i].firstIndex);
        EXPECT_EQ(after[i].baseInstance, 0U);
    }
}

TEST_P(FilteredDrawTest, RandomFiltersDrawWhatPassesWithOneDrawPerSet) {
    constexpr int kCells = 24;
    const QColor palette[] = {Qt::red, Qt::green, Qt::blue, Qt::black};
    std::mt19937 random(20250311);
    const auto below = [&](int end) { return std::uniform_int_distribution<int>(0, end - 1)(random); };
    for (int round = 0; round < 20; ++round) {
        QList<QColor> colors;
        QBitArray mask(kCells);
        QList<QColor> expected;
        const int odds = below(5);
        for (int cell = 0; cell < kCells; ++cell) {
            colors << palette[below(4)];
            mask.setBit(cell, below(4) < odds);
            const QColor drawn = colors.last() == Qt::black ? QColor(Qt::white) : colors.last();
            expected << (mask.testBit(cell) ? drawn : QColor(Qt::black));
        }
        GPUModel model;
        addTextured(model, colors);
        const DrawFilter filter({mask});
        for (const DrawOrder order : kOrders)
            EXPECT_EQ(drawnWith(model, kCells, drawing(filter, order)), expected) << round;
        const std::size_t draws = drawCounts(model, kCells, drawing(filter, DrawOrder::ByTextures)).size();
        EXPECT_LE(draws, hasDrawParameters() ? 4U : std::size_t(mask.count(true)));
    }
}

} // namespace Atelier::Vel::Testing
