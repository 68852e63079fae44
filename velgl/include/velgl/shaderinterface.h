#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

/// Shader storage binding point at which GPUModel::draw() binds the packed materials.
constexpr unsigned int kMaterialsBinding = 0;
/// Shader storage binding point at which GPUModel::draw() binds the packed instances.
constexpr unsigned int kInstancesBinding = 1;

/// The stage that declarations are written for. Only a vertex shader can ask for the number of the command.
enum class ShaderStage { Vertex, Fragment };

/// The names of the plans that a shader is written for. A plan that is not registered, or an empty name,
/// declares nothing.
struct ShaderPlans {
    QString materials;                 ///< for example "OBJMaterial"
    QString instances;                 ///< for example "InstanceInfo"
    unsigned int firstTextureUnit = 0; ///< see DrawOptions::firstTextureUnit
};

/// Writes the GLSL declarations of everything that GPUModel::draw() hands to a shader. They come from the
/// registered plans, so they always match the layout of the buffers. Insert them right after the #version
/// line, which must be 430 core or later:
///
///     int velglCommand();                   // the number of the command that draws (vertex stage only)
///     struct VelglMaterial { ... };         // the value members of the materials' plan
///     VelglMaterial velglMaterial(int command);
///     int velglInstanceNumber();            // the number of the instance that is drawn (vertex stage only)
///     struct VelglInstance { ... };         // the value members of the instances' plan
///     VelglInstance velglInstance(int number);
///     uniform sampler2D velgl_NAME;         // for each texture member NAME of the materials' plan
///     bool velglHas_NAME();                 // whether the material that draws has that texture
///
/// The number of an instance is command x instance count + gl_InstanceID, where the instance count is that of
/// GPUModel::add(). So with one instance it is the number of the command. The further instances of a command
/// whose own instance count was not 1 have the number of the last one. A number without an item reads zeros.
/// A plan without value members declares no struct and no function for it. Member names, NAME included, are
/// written as InstanceDataPlan::glslName() gives them: a texture "in" is `velgl_in_`.
/// Requires: the plans are registered, see InstanceDataRegistry. Needs no context.
/// Threads: any.
/// Returns: ASCII text that ends with a line break. It is built by each call.
VELGL_EXPORT QByteArray shaderInterface(ShaderStage stage, const ShaderPlans& plans);

} // namespace Atelier::Vel
