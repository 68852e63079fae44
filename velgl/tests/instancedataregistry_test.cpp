#include <velgl/instancedataregistry.h>

#include <dlfcn.h>

#include <gmock/gmock.h>

#include <velgl/instancedataplan.h>

#include "support/messagelog.h"

namespace Atelier::Vel::Testing {

namespace {

using DataType = InstanceDataPlan::DataType;

InstanceDataPlan* newPlan(const QString& name, DataType type) {
    auto* plan = new InstanceDataPlan(name);
    plan->addMember(type, QStringLiteral("member"));
    return plan;
}

int countOf(const QString& name) {
    int count = 0;
    for (const InstanceDataPlan* plan : InstanceDataRegistry::Instance().plans())
        count += plan->name() == name;
    return count;
}

// Registered during static initialisation.
const InstanceDataPlan* const registeredAtStart = [] {
    InstanceDataRegistry::Instance().registerPlan(newPlan(QStringLiteral("AtStart"), DataType::Float));
    return InstanceDataRegistry::Instance().plan(QStringLiteral("AtStart"));
}();

} // namespace

TEST(InstanceDataRegistryTest, CanBeUsedDuringStaticInitialisation) {
    ASSERT_NE(registeredAtStart, nullptr);
    EXPECT_EQ(InstanceDataRegistry::Instance().plan(QStringLiteral("AtStart")), registeredAtStart);
}

TEST(InstanceDataRegistryTest, UnknownPlanIsNull) {
    EXPECT_EQ(InstanceDataRegistry::Instance().plan(QStringLiteral("no such plan")), nullptr);
    EXPECT_EQ(InstanceDataRegistry::Instance().plan(QString()), nullptr);
}

TEST(InstanceDataRegistryTest, PlansKeepTheOrderOfTheirRegistration) {
    InstanceDataRegistry& registry = InstanceDataRegistry::Instance();
    registry.registerPlan(newPlan(QStringLiteral("Z"), DataType::Float));
    registry.registerPlan(newPlan(QStringLiteral("A"), DataType::Float));
    const auto plans = registry.plans();
    EXPECT_LT(plans.indexOf(registry.plan(QStringLiteral("Z"))),
              plans.indexOf(registry.plan(QStringLiteral("A"))));
}

TEST(InstanceDataRegistryTest, SecondPlanOfANameIsLeftOut) {
    InstanceDataRegistry& registry = InstanceDataRegistry::Instance();
    registry.registerPlan(newPlan(QStringLiteral("Twice"), DataType::Float));
    const InstanceDataPlan* first = registry.plan(QStringLiteral("Twice"));
    const MessageLog log;
    registry.registerPlan(newPlan(QStringLiteral("Twice"), DataType::Float));
    EXPECT_TRUE(log.messages().empty()) << "the same members";
    registry.registerPlan(newPlan(QStringLiteral("Twice"), DataType::Vec3));
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::ElementsAre(QStringLiteral("A second plan 'Twice' with other members is left out")));
    EXPECT_EQ(registry.plan(QStringLiteral("Twice")), first);
    EXPECT_EQ(countOf(QStringLiteral("Twice")), 1);
}

TEST(InstanceDataRegistryTest, MembersDifferByTypeNameNumberAndOrder) {
    using Members = QVector<std::pair<DataType, const char*>>;
    const auto registered = [](const Members& members) {
        auto* plan = new InstanceDataPlan(QStringLiteral("Compared"));
        for (const auto& [type, name] : members)
            plan->addMember(type, QString::fromLatin1(name));
        const MessageLog log;
        InstanceDataRegistry::Instance().registerPlan(plan);
        return log.messages().empty();
    };
    const Members first = {{DataType::Float, "a"}, {DataType::Vec3, "b"}};
    EXPECT_TRUE(registered(first));
    EXPECT_TRUE(registered(first));
    for (const Members& other :
         {Members{{DataType::Float, "a"}, {DataType::Vec4, "b"}},
          Members{{DataType::Float, "a"}, {DataType::Vec3, "c"}}, Members{{DataType::Float, "a"}}, //
          Members{{DataType::Float, "a"}, {DataType::Vec3, "b"}, {DataType::Int, "c"}},
          Members{{DataType::Vec3, "b"}, {DataType::Float, "a"}}})
        EXPECT_FALSE(registered(other)) << other.size();
}

TEST(InstanceDataRegistryTest, NullAndTheSamePlanAgainChangeNothing) {
    InstanceDataRegistry& registry = InstanceDataRegistry::Instance();
    InstanceDataPlan* plan = newPlan(QStringLiteral("Same"), DataType::Float);
    registry.registerPlan(plan);
    const int count = registry.plans().size();
    registry.registerPlan(plan);
    registry.registerPlan(nullptr);
    EXPECT_EQ(registry.plans().size(), count);
    EXPECT_EQ(registry.plan(QStringLiteral("Same")), plan);
}

TEST(InstanceDataRegistryTest, PlansOutliveThePluginThatRegisteredThem) {
    const InstanceDataPlan* plan = nullptr;
    for (int round = 0; round < 50; ++round) {
        void* plugin = dlopen(PLUGIN_WITH_PLAN, RTLD_NOW);
        ASSERT_NE(plugin, nullptr) << dlerror();
        ASSERT_EQ(dlclose(plugin), 0);
        EXPECT_EQ(dlopen(PLUGIN_WITH_PLAN, RTLD_NOW | RTLD_NOLOAD), nullptr) << "it is still loaded";
        const InstanceDataPlan* found =
            InstanceDataRegistry::Instance().plan(QStringLiteral("PlanOfAPlugin"));
        ASSERT_NE(found, nullptr);
        EXPECT_TRUE(!plan || plan == found);
        plan = found;
        EXPECT_EQ(plan->members().first().name, QStringLiteral("memberOfAPlugin"));
    }
    EXPECT_EQ(countOf(QStringLiteral("PlanOfAPlugin")), 1);
}

} // namespace Atelier::Vel::Testing
