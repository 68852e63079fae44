#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

/// Shader storage binding point at which GPUModel::draw() puts the packed materials.
constexpr unsigned int kMaterialsBinding = 0;
/// Shader storage binding point at which GPUModel::draw() puts the packed instances.
constexpr unsigned int kInstancesBinding = 1;

enum class ShaderStage { Vertex, Fragment };

/// The plans that a shader is written for. A plan that is not registered, or an empty name, declares nothing.
struct ShaderPlans {
    QString materials; ///< for example "OBJMaterial"
    QString instances; ///< for example "InstanceInfo"
};

/// GLSL declarations of all that GPUModel::draw() hands to a shader, made from the registered plans so that
/// they cannot disagree with the buffers. They belong right after the #version line, which has to be 430 core
/// or later:
///
///     int velglCommand();                   // the number of the command that draws (vertex stage only)
///     struct VelglMaterial { ... };         // the value members of the materials' plan
///     VelglMaterial velglMaterial(int command);
///     struct VelglInstance { ... };         // the value members of the instances' plan
///     VelglInstance velglInstance(int command);
///     uniform sampler2D velgl_NAME;         // for each texture member NAME of the materials' plan
///     bool velglHas_NAME();                 // whether the material that draws has that texture
///
/// A plan without value members declares no struct and no function for it.
VELGL_EXPORT QByteArray shaderInterface(ShaderStage stage, const ShaderPlans& plans);

} // namespace Atelier::Vel
