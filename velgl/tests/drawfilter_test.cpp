#include <velgl/drawfilter.h>

#include <gmock/gmock.h>

#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>

namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;

void addCommands(GPUModel& model, int count, quint64 key) {
    auto* buffers = new DrawBuffers;
    const QVector<DrawElementsIndirectCommand> commands(count);
    buffers->setDrawElementsIndirectCommands(commands.constData(), count);
    model.add(buffers, 1, nullptr, nullptr, key);
}

QBitArray bits(std::initializer_list<bool> values) {
    QBitArray result(int(values.size()));
    int place = 0;
    for (const bool value : values)
        result.setBit(place++, value);
    return result;
}

} // namespace

TEST(DrawFilterTest, WithoutArgumentsEverythingPasses) {
    const DrawFilter filter;
    EXPECT_TRUE(filter.passesAll());
    EXPECT_TRUE(filter.passes(0, 0));
    EXPECT_TRUE(filter.passes(-1, 1 << 30));
}

TEST(DrawFilterTest, MasksSelectCommandsAndWhatHasNoBitPasses) {
    const DrawFilter filter({bits({true, false}), bits({}), bits({false})});
    EXPECT_FALSE(filter.passesAll());
    EXPECT_TRUE(filter.passes(0, 0));
    EXPECT_FALSE(filter.passes(0, 1));
    EXPECT_TRUE(filter.passes(0, 2));
    EXPECT_TRUE(filter.passes(0, -1));
    EXPECT_TRUE(filter.passes(1, 0));
    EXPECT_FALSE(filter.passes(2, 0));
    EXPECT_TRUE(filter.passes(3, 0));
    EXPECT_TRUE(filter.passes(-1, 0));
}

TEST(DrawFilterTest, ConditionIsAskedOnceForEachCommand) {
    GPUModel model;
    addCommands(model, 2, 0);
    addCommands(model, 0, 0);
    addCommands(model, 1, 0);
    std::vector<std::pair<int, int>> asked;
    const DrawFilter filter(model, [&](int drawable, int command) {
        asked.emplace_back(drawable, command);
        return command == 1;
    });
    EXPECT_FALSE(filter.passes(0, 0));
    EXPECT_TRUE(filter.passes(0, 1));
    EXPECT_FALSE(filter.passes(2, 0));
    EXPECT_THAT(asked, ElementsAre(std::pair(0, 0), std::pair(0, 1), std::pair(2, 0)));
}

TEST(DrawFilterTest, ConditionMayAskForKeysAndOtherFilters) {
    GPUModel model;
    addCommands(model, 2, 5);
    addCommands(model, 2, 6);
    const DrawFilter visible({bits({true, false}), bits({true, false})});
    const DrawFilter filter(model, [&](int drawable, int command) {
        return model.key(drawable) == 6 && visible.passes(drawable, command);
    });
    EXPECT_FALSE(filter.passes(0, 0));
    EXPECT_TRUE(filter.passes(1, 0));
    EXPECT_FALSE(filter.passes(1, 1));
}

TEST(DrawFilterTest, ModelThatGrewAfterwardsHasCommandsThatPass) {
    GPUModel model;
    addCommands(model, 1, 0);
    const DrawFilter filter(model, [](int, int) { return false; });
    EXPECT_FALSE(filter.passes(0, 0));
    addCommands(model, 1, 0);
    EXPECT_TRUE(filter.passes(1, 0));
}

TEST(DrawFilterTest, CopiesAreTheSameFilter) {
    const DrawFilter filter({bits({false})});
    const DrawFilter copy = filter; // NOLINT(performance-unnecessary-copy-initialization): it is tested
    EXPECT_FALSE(copy.passes(0, 0));
    EXPECT_FALSE(copy.passesAll());
}

} // namespace Atelier::Vel::Testing
