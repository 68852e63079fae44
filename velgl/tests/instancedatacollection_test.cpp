#include <velgl/instancedatacollection.h>

#include <gtest/gtest.h>

#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

namespace Atelier::Vel::Testing {

TEST(InstanceDataCollectionTest, KeepsItsNameAndItems) {
    const InstanceDataCollection collection(
        QStringLiteral("Name"), {InstanceData(QStringLiteral("a")), InstanceData(QStringLiteral("b"))});
    EXPECT_EQ(collection.name(), QStringLiteral("Name"));
    ASSERT_EQ(collection.items().size(), 2);
    EXPECT_EQ(collection.items()[1].name(), QStringLiteral("b"));
}

TEST(InstanceDataCollectionTest, PacksByThePlanOfItsName) {
    auto* plan = new InstanceDataPlan(QStringLiteral("CollectionPlan"));
    plan->addMember(InstanceDataPlan::DataType::UInt, QStringLiteral("number"));
    InstanceDataRegistry::Instance().registerPlan(plan);
    // The names of the items have no effect.
    InstanceData item(QStringLiteral("other"));
    item.set(QStringLiteral("number"), "abcd", 4);
    const InstanceDataCollection collection(QStringLiteral("CollectionPlan"), {item, item});
    EXPECT_EQ(collection.plan(), plan);
    EXPECT_EQ(collection.packed(), QByteArray("abcdabcd"));
}

TEST(InstanceDataCollectionTest, WithoutAPlanNothingIsPacked) {
    const InstanceDataCollection collection(QStringLiteral("no such plan"), {InstanceData()});
    EXPECT_EQ(collection.plan(), nullptr);
    EXPECT_TRUE(collection.packed().isEmpty());
}

} // namespace Atelier::Vel::Testing
