#include "filterfixture.h"

#include <velgl/drawbuffers.h>

#include <limits>
#include <random>

#include <gmock/gmock.h>

#include <velgl/vertexarrayobject.h>

#include "support/messagelog.h"

// Commands that are hidden and shown between two draws.
namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Visibility = DrawBuffers::Visibility;

class VisibilityTest : public FilterFixture {
protected:
    // Hides the commands whose character is '0' and shows the others.
    static void show(DrawBuffers& buffers, const std::string& bits) {
        for (std::size_t i = 0; i < bits.size(); ++i)
            buffers.setVisibility(int(i), bits[i] == '1' ? Visibility::Shown : Visibility::Hidden);
    }
    static std::vector<int> instanceCounts(DrawBuffers& buffers) {
        std::vector<int> counts;
        for (const DrawElementsIndirectCommand& command : buffers.readBackCommands())
            counts.push_back(int(command.instanceCount));
        return counts;
    }
};

} // namespace

INSTANTIATE_FOR_DRIVERS(VisibilityTest);

TEST_P(VisibilityTest, HiddenCommandsAreNotDrawnInAnyOrderFromTheSameBuffers) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red, Qt::blue});
    DrawBuffers& row = *model.drawable(0);
    const DrawFilter filter = filterOf({"1011"});
    const DrawOptions options[] = {drawing({}, DrawOrder::AsGiven), drawing({}, DrawOrder::ByTextures),
                                   drawing(filter, DrawOrder::AsGiven),
                                   drawing(filter, DrawOrder::ByTextures)};
    for (const DrawOptions& how : options)
        drawnWith(model, 4, how);
    const QColor colors[] = {Qt::red, Qt::green, Qt::red, Qt::blue};
    const NameCount names;
    const UploadHook uploads;
    for (const char* bits : {"0111", "1000", "1111", "0000", "1101", "1111"}) {
        show(row, bits);
        for (const DrawOptions& how : options) {
            const QList<QColor> drawn = drawnWith(model, 4, how);
            for (int i = 0; i < 4; ++i)
                EXPECT_EQ(drawn[i], bits[i] == '1' && how.filter.passes(0, i) ? colors[i] : QColor(Qt::black))
                    << bits << " " << i;
        }
    }
    EXPECT_THAT(names.imbalance().filter(QStringLiteral("buffer")), IsEmpty());
    EXPECT_EQ(uploads.wholeCount(), 0);
}

TEST_P(VisibilityTest, FourBytesAreUploadedForEachCommandThatChanges) {
    GPUModel model;
    addRow(model, opaque({Qt::red, Qt::green, Qt::blue}));
    DrawBuffers& row = *model.drawable(0);
    drawnColors(model, 3);
    UploadHook hook;
    row.setVisibility(1, Visibility::Hidden);
    EXPECT_EQ(drawnColors(model, 3), opaque({Qt::red, Qt::black, Qt::blue}));
    ASSERT_THAT(hook.parts(), SizeIs(1));
    EXPECT_EQ(hook.parts()[0].offset, 24);
    EXPECT_EQ(hook.parts()[0].size, 4);
    hook.restart();
    row.setVisibility(1, Visibility::Hidden);
    row.setVisibility(0, Visibility::Hidden);
    row.setVisibility(0, Visibility::Shown);
    drawnColors(model, 3);
    EXPECT_THAT(hook.parts(), IsEmpty()) << "nothing is other than before";
    row.setVisibility(1, Visibility::Shown);
    row.setVisibility(2, Visibility::Hidden);
    EXPECT_EQ(drawnColors(model, 3), opaque({Qt::red, Qt::green, Qt::black}));
    EXPECT_EQ(hook.partBytes(), 8);
}

TEST_P(VisibilityTest, ManyChangesAreUploadedTogether) {
    constexpr int kCells = 50;
    GPUModel model;
    QList<QColor> colors;
    for (int i = 0; i < kCells; ++i)
        colors << QColor(Qt::red);
    addRow(model, colors);
    drawnColors(model, kCells);
    const UploadHook hook;
    for (int i = 0; i < kCells; i += 2) {
        model.drawable(0)->setVisibility(i, Visibility::Hidden);
        colors[i] = Qt::black;
    }
    EXPECT_EQ(drawnColors(model, kCells), colors);
    EXPECT_THAT(hook.parts(), SizeIs(1));
}

TEST_P(VisibilityTest, BuffersThatAreMadeLaterHaveTheHiddenCommands) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red});
    show(*model.drawable(0), "011");
    EXPECT_THAT(instanceCounts(*model.drawable(0)), ElementsAre(0, 1, 1));
    for (const DrawOrder order : kOrders)
        EXPECT_EQ(drawnWith(model, 3, drawing(filterOf({"101"}), order)),
                  opaque({Qt::black, Qt::black, Qt::red}));
    show(*model.drawable(0), "110");
    EXPECT_THAT(instanceCounts(*model.drawable(0)), ElementsAre(1, 1, 0));
    EXPECT_EQ(model.drawable(0)->drawElementsIndirectCommands()[2].instanceCount, 1U) << "as it was set";
}

TEST_P(VisibilityTest, InstanceCountsOfTheirOwnComeBack) {
    GPUModel model;
    addRow(model, opaque({Qt::red, Qt::green}));
    DrawBuffers& row = *model.drawable(0);
    QVector<DrawElementsIndirectCommand> commands = row.drawElementsIndirectCommands();
    commands[0].instanceCount = 7;
    commands[1].count = 1000;
    row.setDrawElementsIndirectCommands(commands.constData(), commands.size());
    const MessageLog log; // of the command beyond the indices
    row.setVisibility(0, Visibility::Hidden);
    EXPECT_THAT(instanceCounts(row), ElementsAre(0, 1));
    row.setVisibility(0, Visibility::Shown);
    row.setVisibility(1, Visibility::Hidden);
    EXPECT_THAT(instanceCounts(row), ElementsAre(7, 0));
    EXPECT_EQ(row.readBackCommands()[1].count, 0U);
    EXPECT_THAT(log.texts(QtWarningMsg), SizeIs(1));
}

TEST_P(VisibilityTest, NewCommandsAreShownAndNewIndicesChangeNothing) {
    GPUModel model;
    addRow(model, opaque({Qt::red, Qt::green}));
    DrawBuffers& row = *model.drawable(0);
    show(row, "01");
    EXPECT_EQ(drawnColors(model, 2), opaque({Qt::black, Qt::green}));
    row.setIndexedDraw(row.indexBuffer(), row.indexCount(), row.indexType());
    EXPECT_EQ(drawnColors(model, 2), opaque({Qt::black, Qt::green}));
    const DrawElementsIndirectCommand commands[] = {cellCommand(0), cellCommand(1)};
    row.setDrawElementsIndirectCommands(commands, 2);
    EXPECT_EQ(row.visibility(0), Visibility::Shown);
    EXPECT_EQ(drawnColors(model, 2), opaque({Qt::red, Qt::green}));
}

TEST_P(VisibilityTest, CommandsHiddenBeforeTheyAreAddedStayHidden) {
    auto* row = triangleRow(2);
    row->setVisibility(1, Visibility::Hidden);
    GPUModel model;
    model.add(row, 3,
              new InstanceDataCollection(QStringLiteral("TestMaterial"),
                                         {coloredMaterial(Qt::red), coloredMaterial(Qt::green)}),
              new InstanceDataCollection(QStringLiteral("TestInstance"),
                                         QList<InstanceData>{movedInstance({}), movedInstance({})}),
              0);
    EXPECT_THAT(instanceCounts(*row), ElementsAre(3, 0));
}

TEST_P(VisibilityTest, EachGroupOfContextsHidesTheSame) {
    const std::unique_ptr<DrawBuffers> row(triangleRow(2));
    EXPECT_THAT(instanceCounts(*row), ElementsAre(1, 1));
    const auto unrelated = makeContext(options());
    unrelated->makeCurrent();
    EXPECT_THAT(instanceCounts(*row), ElementsAre(1, 1));
    row->setVisibility(0, Visibility::Hidden);
    EXPECT_THAT(instanceCounts(*row), ElementsAre(0, 1));
    row->setVisibility(1, Visibility::Hidden);
    _context->makeCurrent();
    EXPECT_THAT(instanceCounts(*row), ElementsAre(0, 0));
    row->setVisibility(0, Visibility::Shown);
    EXPECT_THAT(instanceCounts(*row), ElementsAre(1, 0));
    unrelated->makeCurrent();
    EXPECT_THAT(instanceCounts(*row), ElementsAre(1, 0));
    _context->makeCurrent();
}

TEST_P(VisibilityTest, MissingCommandIsReportedOnce) {
    const MessageLog log;
    const std::unique_ptr<DrawBuffers> row(triangleRow(2));
    row->VAO()->setLabel(QStringLiteral("row"));
    for (const int command : {2, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        row->setVisibility(command, Visibility::Hidden);
        EXPECT_EQ(row->visibility(command), Visibility::Hidden);
    }
    DrawBuffers().setVisibility(0, Visibility::Shown);
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre("'row' has 2 draw commands and no command 2",
                                                     "'' has 0 draw commands and no command 0"));
    EXPECT_EQ(row->visibility(1), Visibility::Shown);
    EXPECT_THAT(instanceCounts(*row), ElementsAre(1, 1));
}

TEST_P(VisibilityTest, RandomChangesDrawWhatIsShown) {
    constexpr int kCells = 24;
    std::mt19937 random(77);
    GPUModel model;
    const QColor palette[] = {Qt::red, Qt::green, Qt::blue};
    QList<QColor> colors;
    for (int i = 0; i < kCells; ++i)
        colors << palette[random() % 3];
    addTextured(model, colors);
    std::string bits(kCells, '1');
    for (int round = 0; round < 12; ++round) {
        for (auto changes = random() % 30; changes > 0; --changes)
            bits[random() % kCells] = random() % 2 == 0 ? '0' : '1';
        show(*model.drawable(0), bits);
        for (const DrawOrder order : kOrders) {
            const QList<QColor> drawn = drawnWith(model, kCells, drawing({}, order));
            for (int i = 0; i < kCells; ++i)
                EXPECT_EQ(drawn[i], bits[std::size_t(i)] == '1' ? colors[i] : QColor(Qt::black)) << round;
        }
    }
}

} // namespace Atelier::Vel::Testing
