#include "import/mtl/materialvalues.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <gtest/gtest.h>

namespace Atelier::Vel {

namespace {

template<typename T>
T valueOf(const InstanceData& material, const QString& name) {
    T value{};
    const QByteArray bytes = material.value(name);
    EXPECT_EQ(bytes.size(), static_cast<int>(sizeof value)) << name.toStdString();
    std::memcpy(&value, bytes.constData(), std::min<std::size_t>(sizeof value, bytes.size()));
    return value;
}

} // namespace

TEST(MaterialValuesTest, PlainMaterialIsOpaqueAndNothingElse) {
    InstanceData material(materialPlanName(MaterialLayout::Plain));
    setInitialValues(material, MaterialLayout::Plain);
    EXPECT_EQ(material.name(), "OBJMaterial");
    EXPECT_EQ(material.valueNames(), QStringList("d"));
    EXPECT_EQ(valueOf<float>(material, "d"), 1.0F);
}

TEST(MaterialValuesTest, ExtendedMaterialHasTheValuesOfAMissingLine) {
    InstanceData material(materialPlanName(MaterialLayout::Extended));
    setInitialValues(material, MaterialLayout::Extended);
    EXPECT_EQ(material.name(), "OBJMaterialExtended");
    EXPECT_EQ(material.valueNames(), QStringList({"Pr", "d", "illum", "map_scale"}));
    EXPECT_EQ(valueOf<float>(material, "d"), 1.0F);
    EXPECT_EQ(valueOf<float>(material, "Pr"), 1.0F);
    EXPECT_EQ(valueOf<qint32>(material, "illum"), 2);
    EXPECT_EQ((valueOf<std::array<float, 2>>(material, "map_scale")), (std::array<float, 2>{1, 1}));
}

TEST(MaterialValuesTest, LayoutIsThatOfTheOptions) {
    LoadOptions options;
    EXPECT_EQ(layoutOf(options), MaterialLayout::Plain);
    options.extendedMaterials = true;
    EXPECT_EQ(layoutOf(options), MaterialLayout::Extended);
}

} // namespace Atelier::Vel
