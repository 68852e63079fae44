#include <dlfcn.h>

#include <QtCore/QRegExp>
#include <QtCore/QStringList>

#include <gmock/gmock.h>

#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

// This program is not linked to the library: it loads it, as a plug-in host does.

namespace {

/// What the static objects of the library made and registered, in that order.
QStringList& events() {
    static QStringList list;
    return list;
}

template<typename Function>
Function* original(const char* symbol) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, symbol));
}

} // namespace

// The library sees these functions, although the project hides its symbols, and not those of VelGL and Qt.
// NOLINTBEGIN: their symbols
#pragma GCC visibility push(default)
extern "C" {
void _ZN7Atelier3Vel12TextureTokenC1Ev(void* token) {
    events() << QStringLiteral("token");
    original<void(void*)>("_ZN7Atelier3Vel12TextureTokenC1Ev")(token);
}
void _ZN7Atelier3Vel20InstanceDataRegistry12registerPlanEPNS0_16InstanceDataPlanE(
    void* registry, Atelier::Vel::InstanceDataPlan* plan) {
    events() << plan->name();
    original<void(void*, void*)>(
        "_ZN7Atelier3Vel20InstanceDataRegistry12registerPlanEPNS0_16InstanceDataPlanE")(registry, plan);
}
void _ZN7QRegExpC1ERK7QStringN2Qt15CaseSensitivityENS_13PatternSyntaxE(void* expression,
                                                                       const QString& pattern,
                                                                       Qt::CaseSensitivity sensitivity,
                                                                       QRegExp::PatternSyntax syntax) {
    const bool isUsual = sensitivity == Qt::CaseSensitive && syntax == QRegExp::RegExp;
    events() << (isUsual ? pattern : QStringLiteral("other kind of expression"));
    original<void(void*, const QString&, Qt::CaseSensitivity, QRegExp::PatternSyntax)>(
        "_ZN7QRegExpC1ERK7QStringN2Qt15CaseSensitivityENS_13PatternSyntaxE")(expression, pattern, sensitivity,
                                                                             syntax);
}
}
#pragma GCC visibility pop
// NOLINTEND

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

// Builder unit, OBJ-import unit, text unit: the order of the sources in the library's CMakeLists.txt.
TEST(InstancePlansTest, LoadingMakesEachStaticOnceInTheOrderOfTheUnits) {
    events().clear();
    void* const library = load();
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(events().join(' ').toStdString(), "token InstanceInfo token OBJMaterial \\S \\S \\s+");
    events().clear();
    EXPECT_EQ(dlclose(library), 0);
    EXPECT_TRUE(events().isEmpty()) << "unloading registers nothing";
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
