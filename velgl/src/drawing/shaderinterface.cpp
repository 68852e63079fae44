#include <velgl/shaderinterface.h>

#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

namespace Atelier::Vel {

namespace {

// Drivers warn of an #extension that they lack, so it is enabled only if the driver has it.
const char kCommandNumber[] = R"(#ifdef GL_ARB_shader_draw_parameters
#extension GL_ARB_shader_draw_parameters : enable
#endif
uniform int velgl_firstCommand;
#ifdef GL_ARB_shader_draw_parameters
int velglCommand() { return velgl_firstCommand < 0 ? gl_BaseInstanceARB : velgl_firstCommand + gl_DrawIDARB; }
#else
int velglCommand() { return velgl_firstCommand; }
#endif
uniform int velgl_lastInstance;
int velglInstanceNumber() {
    return velglCommand() * (velgl_lastInstance + 1) + min(gl_InstanceID, velgl_lastInstance);
}
)";

// %1 is the kind of item, "Material" or "Instance", %3 what its number is.
const char kStorage[] =
    R"(layout(std430, binding = %2) readonly buffer Velgl%1s { Velgl%1 items[]; } velgl_%1s;
Velgl%1 velgl%1(int %3) { return velgl_%1s.items[%3]; }
)";

// %1 is the member, %2 its texture unit, %3 its number.
const char kTexture[] = R"(layout(binding = %2) uniform sampler2D velgl_%1;
bool velglHas_%1() { return (velgl_textures & (1 << %3)) != 0; }
)";

QString itemDeclarations(const InstanceDataPlan* plan, const QString& kind, unsigned int binding,
                         const QString& number) {
    if (!plan || plan->stride() == 0)
        return {};
    return plan->glslStruct(QStringLiteral("Velgl") + kind) +
           QString::fromLatin1(kStorage).arg(kind, QString::number(binding), number);
}

QString textureDeclarations(const InstanceDataPlan* plan, int firstUnit) {
    QString text = QStringLiteral("uniform int velgl_textures;\n");
    const QStringList names = plan ? plan->textureNames() : QStringList();
    for (int unit = 0; unit < names.size(); ++unit)
        text += QString::fromLatin1(kTexture).arg(InstanceDataPlan::glslName(names[unit]),
                                                  QString::number(firstUnit + unit), QString::number(unit));
    return text;
}

} // namespace

QByteArray shaderInterface(ShaderStage stage, const ShaderPlans& plans) {
    const InstanceDataRegistry& registry = InstanceDataRegistry::Instance();
    const InstanceDataPlan* materials = registry.plan(plans.materials);
    const InstanceDataPlan* instances = registry.plan(plans.instances);
    QString text;
    if (stage == ShaderStage::Vertex)
        text += QLatin1String(kCommandNumber);
    text +=
        itemDeclarations(materials, QStringLiteral("Material"), kMaterialsBinding, QStringLiteral("command"));
    text +=
        itemDeclarations(instances, QStringLiteral("Instance"), kInstancesBinding, QStringLiteral("number"));
    text += textureDeclarations(materials, static_cast<int>(plans.firstTextureUnit));
    return text.toLatin1();
}

} // namespace Atelier::Vel
