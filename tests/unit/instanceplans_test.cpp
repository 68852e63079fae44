#include <dlfcn.h>

#include <gmock/gmock.h>

#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

// This program is not linked to the library: it loads it, as a plug-in host does.

namespace Atelier::Vel {
namespace {

using DataType = InstanceDataPlan::DataType;

void* load() {
    void* const library = dlopen(VELMODEL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(library, nullptr) << dlerror();
    return library;
}

TEST(InstancePlansTest, LoadingRegistersBothPlansInOrder) {
    EXPECT_TRUE(InstanceDataRegistry::Instance().plans().isEmpty());
    void* const library = load();
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
        void* const library = load();
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
