#include "import/mtl/materialvalues.h"

namespace Atelier::Vel {

QString materialPlanName(MaterialLayout layout) {
    return layout == MaterialLayout::Plain ? QStringLiteral("OBJMaterial")
                                           : QStringLiteral("OBJMaterialExtended");
}

void setInitialValues(InstanceData& material, MaterialLayout layout) {
    setScalar(material, QStringLiteral("d"), 1.0F);
    if (layout == MaterialLayout::Plain)
        return;
    constexpr qint32 kDiffuseAndSpecular = 2;
    constexpr float kUnchanged[] = {1.0F, 1.0F};
    material.set(QStringLiteral("illum"), &kDiffuseAndSpecular, sizeof kDiffuseAndSpecular);
    setScalar(material, QStringLiteral("Pr"), 1.0F);
    material.set(QStringLiteral("map_scale"), kUnchanged, sizeof kUnchanged);
}

void setScalar(InstanceData& material, const QString& name, float value) {
    material.set(name, &value, sizeof value);
}

void setColour(InstanceData& material, const QString& name, const float* rgb) {
    material.set(name, rgb, 3 * sizeof *rgb);
}

} // namespace Atelier::Vel
