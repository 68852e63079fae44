#pragma once

#include <QtCore/QString>

#include <velgl/instancedata.h>
#include <velmodel/loadoptions.h>

namespace Atelier::Vel {

/// The layouts of materials, "OBJMaterial" and "OBJMaterialExtended".
enum class MaterialLayout { Plain, Extended };

inline MaterialLayout layoutOf(const LoadOptions& options) {
    return options.extendedMaterials ? MaterialLayout::Extended : MaterialLayout::Plain;
}

/// The name of a layout.
QString materialPlanName(MaterialLayout layout);

/// Sets the values of a material of which nothing is known. Members that are not set are zero.
void setInitialValues(InstanceData& material, MaterialLayout layout);

void setScalar(InstanceData& material, const QString& name, float value);
/// Requires: three floats at `rgb`.
void setColour(InstanceData& material, const QString& name, const float* rgb);

} // namespace Atelier::Vel
