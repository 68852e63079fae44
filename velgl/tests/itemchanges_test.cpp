#include "filterfixture.h"

#include <velgl/instancedatacollection.h>

#include <limits>
#include <random>

#include <gmock/gmock.h>

#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

#include "support/messagelog.h"

// Items that are replaced between two draws.
namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int kPoint = 3;
constexpr int kStride = 32;      // of "TestMaterial"
constexpr int kColorOffset = 16; // of its member "color"

class ItemChangesTest : public FilterFixture {
protected:
    static QList<InstanceData> greys(int count) {
        QList<InstanceData> items;
        for (int i = 0; i < count; ++i)
            items << grey(i);
        return items;
    }
    // All bytes of the color differ from those of other levels, except for the last one of each float.
    static InstanceData grey(int level) {
        const float value = 1.0F + 1.2345678F * float(level + 1);
        const float components[] = {value, value, value};
        InstanceData material(QStringLiteral("TestMaterial"));
        material.set(QStringLiteral("color"), components, sizeof components);
        return material;
    }
    // The parts that are uploaded for `collection`.
    static std::vector<UploadHook::Part> uploadedParts(InstanceDataCollection& collection) {
        const UploadHook hook;
        EXPECT_TRUE(collection.bindStorage(kPoint));
        EXPECT_EQ(hook.wholeCount(), 0);
        return hook.parts();
    }
};

InstanceData withNumber(quint32 number) {
    InstanceData item;
    item.set(QStringLiteral("number"), &number, sizeof number);
    return item;
}

// A plan whose items have a number and 60 further bytes.
QString numberPlan() {
    static const QString name = [] {
        auto* plan = new InstanceDataPlan(QStringLiteral("ItemChangesPlan"));
        plan->addMember(InstanceDataPlan::DataType::UInt, QStringLiteral("number"));
        plan->addMember(InstanceDataPlan::DataType::Vec4, QStringLiteral("a"));
        plan->addMember(InstanceDataPlan::DataType::Vec4, QStringLiteral("b"));
        plan->addMember(InstanceDataPlan::DataType::Vec4, QStringLiteral("c"));
        InstanceDataRegistry::Instance().registerPlan(plan);
        return plan->name();
    }();
    return name;
}

} // namespace

INSTANTIATE_FOR_DRIVERS(ItemChangesTest);

TEST_P(ItemChangesTest, MaterialsAndInstancesChangeBetweenFrames) {
    GPUModel model;
    addRow(model, opaque({Qt::red, Qt::green, Qt::blue}));
    EXPECT_TRUE(model.materials(0)->set(1, coloredMaterial(Qt::yellow))) << "before the first draw";
    EXPECT_EQ(drawnColors(model, 3), opaque({Qt::red, Qt::yellow, Qt::blue}));
    EXPECT_TRUE(model.materials(0)->set(2, coloredMaterial(Qt::cyan)));
    EXPECT_TRUE(model.instances(0)->set(0, movedInstance({8, 0, 0})));
    const NameCount names;
    EXPECT_EQ(drawnColors(model, 3), opaque({Qt::black, Qt::yellow, Qt::cyan}));
    EXPECT_TRUE(model.instances(0)->set(0, movedInstance({})));
    EXPECT_EQ(drawnColors(model, 3), opaque({Qt::red, Qt::yellow, Qt::cyan}));
    EXPECT_EQ(model.materials(0)->items()[2].value(QStringLiteral("color")),
              coloredMaterial(Qt::cyan).value(QStringLiteral("color")));
    EXPECT_THAT(names.imbalance().filter(QStringLiteral("buffer")), IsEmpty()) << "no new buffer";
}

TEST_P(ItemChangesTest, OnlyTheBytesThatDifferAreUploaded) {
    InstanceDataCollection collection(numberPlan(), {withNumber(1), withNumber(2), withNumber(3)});
    ASSERT_TRUE(collection.bindStorage(kPoint));
    EXPECT_THAT(uploadedParts(collection), IsEmpty());
    collection.set(1, withNumber(0x0102));
    std::vector<UploadHook::Part> parts = uploadedParts(collection);
    ASSERT_THAT(parts, SizeIs(1));
    EXPECT_EQ(parts[0].offset, 64 + 1);
    EXPECT_EQ(parts[0].size, 1);
    collection.set(2, withNumber(0x01020304));
    parts = uploadedParts(collection);
    ASSERT_THAT(parts, SizeIs(1));
    EXPECT_EQ(parts[0].offset, 128);
    EXPECT_EQ(parts[0].size, 4);
    EXPECT_EQ(collection.readBack(), collection.packed());
    EXPECT_THAT(uploadedParts(collection), IsEmpty()) << "each change is uploaded once";
}

TEST_P(ItemChangesTest, EqualItemUploadsNothing) {
    InstanceDataCollection collection(numberPlan(), {withNumber(1), withNumber(2)});
    ASSERT_TRUE(collection.bindStorage(kPoint));
    EXPECT_TRUE(collection.set(0, withNumber(1)));
    EXPECT_THAT(uploadedParts(collection), IsEmpty());
    InstanceData named(QStringLiteral("another name"));
    const quint32 number = 2;
    named.set(QStringLiteral("number"), &number, sizeof number);
    named.set(QStringLiteral("not in the plan"), "abc", 3);
    EXPECT_TRUE(collection.set(1, named));
    EXPECT_THAT(uploadedParts(collection), IsEmpty());
    EXPECT_EQ(collection.items()[1].name(), QStringLiteral("another name"));
}

TEST_P(ItemChangesTest, FewChangesAreUploadedOneByOneAndManyTogether) {
    InstanceDataCollection collection(QStringLiteral("TestMaterial"), greys(40));
    ASSERT_TRUE(collection.bindStorage(kPoint));
    for (int i = 0; i < 16; ++i)
        collection.set(2 * i, grey(100 + i));
    EXPECT_THAT(uploadedParts(collection), SizeIs(16));
    for (int i = 0; i < 17; ++i)
        collection.set(2 * i, grey(200 + i));
    const std::vector<UploadHook::Part> parts = uploadedParts(collection);
    ASSERT_THAT(parts, SizeIs(1));
    EXPECT_EQ(parts[0].offset / kStride, 0);
    EXPECT_LE(parts[0].offset + parts[0].size, 32 * kStride + kColorOffset + 12);
    EXPECT_EQ(collection.readBack(), collection.packed());
}

TEST_P(ItemChangesTest, ItemThatChangesManyTimesIsUploadedOnce) {
    InstanceDataCollection collection(QStringLiteral("TestMaterial"), greys(3));
    ASSERT_TRUE(collection.bindStorage(kPoint));
    for (int i = 0; i < 5000; ++i)
        collection.set(1, grey(i));
    const std::vector<UploadHook::Part> parts = uploadedParts(collection);
    ASSERT_THAT(parts, SizeIs(1));
    EXPECT_LE(parts[0].size, 12);
    EXPECT_EQ(collection.readBack(), collection.packed());
}

TEST_P(ItemChangesTest, RandomChangesGiveThePackedItems) {
    std::mt19937 random(4711);
    constexpr int kItems = 60;
    InstanceDataCollection collection(QStringLiteral("TestMaterial"), greys(kItems));
    ASSERT_TRUE(collection.bindStorage(kPoint, kItems + 5));
    for (int round = 0; round < 60; ++round) {
        const int changes = int(random() % 50);
        for (int i = 0; i < changes; ++i) {
            InstanceData item = random() % 4 == 0 ? InstanceData() : grey(int(random() % 8));
            const float opacity = float(random() % 3);
            if (random() % 2 == 0)
                item.set(QStringLiteral("opacity"), &opacity, sizeof opacity);
            collection.set(int(random() % kItems), item);
        }
        EXPECT_EQ(collection.readBack(), collection.packed() + QByteArray(5 * kStride, '\0'));
    }
}

TEST_P(ItemChangesTest, EachGroupOfContextsGetsTheChanges) {
    InstanceDataCollection collection(QStringLiteral("TestMaterial"), greys(3));
    ASSERT_TRUE(collection.bindStorage(kPoint));
    const auto unrelated = makeContext(options());
    unrelated->makeCurrent();
    ASSERT_TRUE(collection.bindStorage(kPoint, 4));
    collection.set(0, grey(50));
    EXPECT_THAT(uploadedParts(collection), SizeIs(1));
    collection.set(2, grey(60));
    _context->makeCurrent();
    EXPECT_THAT(uploadedParts(collection), SizeIs(2));
    EXPECT_EQ(collection.readBack(), collection.packed());
    unrelated->makeCurrent();
    EXPECT_EQ(collection.readBack(), collection.packed() + QByteArray(kStride, '\0'));
    const auto late = makeContext(options());
    late->makeCurrent();
    EXPECT_EQ(collection.readBack(), collection.packed()) << "a group that comes after the changes";
    _context->makeCurrent();
}

TEST_P(ItemChangesTest, BufferThatGrowsHasTheChanges) {
    InstanceDataCollection collection(QStringLiteral("TestMaterial"), greys(2));
    ASSERT_TRUE(collection.bindStorage(kPoint));
    collection.set(1, grey(70));
    ASSERT_TRUE(collection.bindStorage(kPoint, 3));
    EXPECT_EQ(collection.readBack(), collection.packed() + QByteArray(kStride, '\0'));
    EXPECT_THAT(uploadedParts(collection), IsEmpty());
}

TEST_P(ItemChangesTest, ItemOfTheSameCollectionMayBeSet) {
    InstanceDataCollection collection(QStringLiteral("TestMaterial"), greys(3));
    const QList<InstanceData> before = collection.items();
    ASSERT_TRUE(collection.bindStorage(kPoint));
    EXPECT_TRUE(collection.set(0, collection.items()[2]));
    EXPECT_TRUE(collection.set(1, collection.items()[1]));
    const QByteArray packed = collection.packed();
    EXPECT_EQ(packed.left(kStride), packed.right(kStride));
    EXPECT_NE(packed.mid(kStride, kStride), packed.left(kStride));
    EXPECT_EQ(collection.readBack(), packed);
    EXPECT_EQ(before[0].value(QStringLiteral("color")), grey(0).value(QStringLiteral("color")))
        << "a copy of the list stays as it was";
}

TEST_P(ItemChangesTest, MissingItemIsReportedOnce) {
    const MessageLog log;
    InstanceDataCollection collection(QStringLiteral("TestMaterial"), greys(2));
    ASSERT_TRUE(collection.bindStorage(kPoint, 5));
    for (const int index : {-1, 2, 4, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_FALSE(collection.set(index, grey(9)));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre("Collection 'TestMaterial' has 2 items and no item -1 to be set"));
    EXPECT_EQ(collection.items().size(), 2);
    EXPECT_THAT(uploadedParts(collection), IsEmpty());
}

TEST_P(ItemChangesTest, ValueOfAnotherPlanIsLeftOutAndReportedOnce) {
    const MessageLog log;
    InstanceDataCollection collection(QStringLiteral("TestMaterial"), {grey(0), grey(1)});
    ASSERT_TRUE(collection.bindStorage(kPoint));
    InstanceData wrong(QStringLiteral("Another plan"));
    const double values[4] = {1, 2, 3, 4};
    wrong.set(QStringLiteral("color"), values, sizeof values);
    wrong.set(QStringLiteral("first"), values, sizeof values);
    for (int frame = 0; frame < 4; ++frame) {
        EXPECT_TRUE(collection.set(frame % 2, wrong));
        EXPECT_TRUE(collection.bindStorage(kPoint));
    }
    EXPECT_EQ(collection.readBack(), QByteArray(2 * kStride, '\0'));
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre("Value 'color' has 32 bytes, but its member of plan "
                                                     "'TestMaterial' has 12; it is left out"));
}

TEST_P(ItemChangesTest, PlanMayBeRegisteredAfterTheChange) {
    auto plan = std::make_unique<InstanceDataPlan>(
        QStringLiteral("LateChangePlan%1").arg(QString::fromLatin1(GetParam().name)));
    plan->addMember(InstanceDataPlan::DataType::UInt, QStringLiteral("number"));
    InstanceDataCollection collection(plan->name(), {withNumber(1)});
    EXPECT_TRUE(collection.set(0, withNumber(2)));
    EXPECT_FALSE(collection.bindStorage(kPoint));
    InstanceDataRegistry::Instance().registerPlan(plan.release());
    EXPECT_TRUE(collection.set(0, withNumber(3)));
    EXPECT_EQ(collection.readBack(), QByteArray("\3\0\0\0", 4));
}

TEST_P(ItemChangesTest, ChangedTextureIsDrawnInEachOrderFromTheSameBuffers) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red, Qt::blue});
    const DrawFilter filter = filterOf({"1011"});
    const DrawOptions options[] = {drawing({}, DrawOrder::AsGiven), drawing({}, DrawOrder::ByTextures),
                                   drawing(filter, DrawOrder::AsGiven),
                                   drawing(filter, DrawOrder::ByTextures)};
    for (const DrawOptions& how : options)
        drawnWith(model, 4, how);
    textureOf(Qt::yellow);
    drawnWith(model, 4, {});
    const auto changed = [&](const QColor& color) {
        InstanceData material = coloredMaterial(Qt::white);
        material.setTexture(QStringLiteral("first"), textureOf(color));
        return material;
    };
    const NameCount names;
    for (const QColor color : {Qt::yellow, Qt::blue, Qt::red}) {
        EXPECT_TRUE(model.materials(0)->set(2, changed(color)));
        for (const DrawOptions& how : options) {
            const QColor second = how.filter.passesAll() ? Qt::green : Qt::black;
            EXPECT_EQ(drawnWith(model, 4, how), (QList<QColor>{Qt::red, second, color, Qt::blue}));
        }
    }
    EXPECT_THAT(names.imbalance().filter(QStringLiteral("buffer")), IsEmpty());
    model.materials(0)->set(2, coloredMaterial(Qt::magenta));
    for (const DrawOptions& how : options) {
        const QColor second = how.filter.passesAll() ? Qt::green : Qt::black;
        EXPECT_EQ(drawnWith(model, 4, how), (QList<QColor>{Qt::red, second, Qt::magenta, Qt::blue}));
    }
}

TEST_P(ItemChangesTest, BufferOfAnotherOrderIsSortedAnewWhereItIs) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red, Qt::green, Qt::blue});
    const DrawOptions sorted = drawing({}, DrawOrder::ByTextures);
    drawnWith(model, 5, sorted);
    const NameCount names;
    InstanceData material = coloredMaterial(Qt::white);
    for (const QColor color : {Qt::red, Qt::green, Qt::blue}) {
        material.setTexture(QStringLiteral("first"), textureOf(color));
        model.materials(0)->set(4, material);
        model.drawable(0)->setVisibility(1, color == Qt::green ? DrawBuffers::Visibility::Hidden
                                                               : DrawBuffers::Visibility::Shown);
        const QColor second = color == Qt::green ? Qt::black : Qt::green;
        EXPECT_EQ(drawnWith(model, 5, sorted), (QList<QColor>{Qt::red, second, Qt::red, Qt::green, color}));
        EXPECT_EQ(drawCounts(model, 5, sorted).size(),
                  hasDrawParameters() ? std::size_t(color == Qt::blue ? 3 : 2) : 5U);
    }
    EXPECT_THAT(names.imbalance().filter(QStringLiteral("buffer")), IsEmpty());
}

TEST_P(ItemChangesTest, ChangedValueKeepsTheListsOfTextures) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red});
    const DrawOptions sorted = drawing({}, DrawOrder::ByTextures);
    drawnWith(model, 3, sorted);
    InstanceData material = coloredMaterial(Qt::black);
    material.setTexture(QStringLiteral("first"), textureOf(Qt::red));
    model.materials(0)->set(2, material);
    const UploadHook hook;
    EXPECT_EQ(drawnWith(model, 3, sorted), opaque({Qt::red, Qt::green, Qt::black}));
    EXPECT_EQ(hook.wholeCount(), 0);
    EXPECT_THAT(hook.parts(), SizeIs(1));
}

} // namespace Atelier::Vel::Testing
