#include <gmock/gmock.h>

#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

#include "staticobjects.h"

using Atelier::Vel::Testing::original;
using Atelier::Vel::Testing::staticEvents;

// The library sees these functions, although the project hides its symbols, and not those of VelGL and Qt.
// NOLINTBEGIN: their symbols
#pragma GCC visibility push(default)
extern "C" {
void _ZN7Atelier3Vel12TextureTokenC1Ev(void* token) {
    staticEvents() << QStringLiteral("token");
    original<void(void*)>("_ZN7Atelier3Vel12TextureTokenC1Ev")(token);
}
void _ZN7Atelier3Vel20InstanceDataRegistry12registerPlanEPNS0_16InstanceDataPlanE(
    void* registry, Atelier::Vel::InstanceDataPlan* plan) {
    staticEvents() << plan->name();
    original<void(void*, void*)>(
        "_ZN7Atelier3Vel20InstanceDataRegistry12registerPlanEPNS0_16InstanceDataPlanE")(registry, plan);
}
}
#pragma GCC visibility pop
// NOLINTEND

namespace Atelier::Vel {
namespace {

using DataType = InstanceDataPlan::DataType;

TEST(InstancePlansTest, LoadingRegistersBothPlansInOrder) {
    EXPECT_TRUE(InstanceDataRegistry::Instance().plans().isEmpty());
    void* const library = Testing::loadLibrary();
    ASSERT_NE(library, nullptr);
    const auto plans = InstanceDataRegistry::Instance().plans();
    ASSERT_EQ(plans.size(), 2);
    EXPECT_EQ(plans[0]->name(), QStringLiteral("InstanceInfo"));
    EXPECT_EQ(plans[1]->name(), QStringLiteral("OBJMaterial"));
    const auto members = plans[0]->members();
    ASSERT_EQ(members.size(), 2);
    EXPECT_EQ(members[0].name, QStringLiteral("ModelMatrix"));
    EXPECT_EQ(members[1].name, QStringLiteral("ModelNormalMatrix"));
    EXPECT_EQ(members[0].type, DataType(17));
    EXPECT_EQ(members[1].type, DataType(17));
    EXPECT_EQ(dlclose(library), 0);
}

TEST(InstancePlansTest, PlansOutliveTheLibrary) {
    for (int round = 0; round < 100; ++round) {
        void* const library = Testing::loadLibrary();
        ASSERT_NE(library, nullptr);
        ASSERT_EQ(dlclose(library), 0);
        ASSERT_EQ(dlopen(VELMODEL_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "it was not unloaded";
        const auto plans = InstanceDataRegistry::Instance().plans();
        ASSERT_EQ(plans.size(), 2);
        ASSERT_EQ(plans[0]->name(), QStringLiteral("InstanceInfo"));
        ASSERT_EQ(plans[0]->members()[1].name, QStringLiteral("ModelNormalMatrix"));
        ASSERT_EQ(plans[1]->name(), QStringLiteral("OBJMaterial"));
        ASSERT_FALSE(plans[1]->members().isEmpty());
        for (const auto& member : plans[1]->members())
            ASSERT_FALSE(member.name.isEmpty());
    }
}

} // namespace
} // namespace Atelier::Vel
