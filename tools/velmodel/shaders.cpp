#include "shaders.h"

#include <limits>

#include <velgl/shaderinterface.h>

namespace Atelier::Vel::Tool {

namespace {

QByteArray head(ShaderStage stage, const QString& materials) {
    const ShaderPlans plans{materials, QStringLiteral("InstanceInfo")};
    const QByteArray placement =
        materials == QLatin1String("OBJMaterialExtended") ? "#define HAS_PLACEMENT\n" : "";
    return "#version 430 core\n" + placement + shaderInterface(stage, plans);
}

QByteArray constant(const char* name, float value) {
    constexpr int kDigits = std::numeric_limits<float>::max_digits10;
    return QByteArray("const float ") + name + " = " + QByteArray::number(double(value), 'f', kDigits) +
           ";\n";
}

const char* const kModelVertexBody = R"(
in vec3 va_Vertex;
in vec3 va_Normal;
in vec2 va_TexCoord;
layout(location = 7) in vec4 va_Color; // white for a model that has none

layout(location = 0) uniform vec4 framing; // the model's centre, and the factor that scales it to unit size
layout(location = 1) uniform mat4 view;
layout(location = 2) uniform mat4 projection;

out vec3 position; // in view space
out vec3 normal;
out vec2 texCoord;
out vec2 diffuseCoord; // pixels beside a triangle, which the derivatives need, do not read its material
out vec4 colour;
flat out int command;

void main() {
    command = velglCommand();
    VelglInstance instance = velglInstance(command);
    vec4 placed = instance.ModelMatrix * vec4(va_Vertex, 1.0);
    vec4 seen = view * vec4((placed.xyz - framing.xyz) * framing.w, 1.0);
    position = seen.xyz;
    normal = mat3(view) * mat3(instance.ModelNormalMatrix) * va_Normal;
    texCoord = va_TexCoord;
    diffuseCoord = va_TexCoord;
#ifdef HAS_PLACEMENT
    VelglMaterial material = velglMaterial(command);
    diffuseCoord = va_TexCoord * material.map_scale + material.map_offset;
#endif
    colour = va_Color;
    gl_Position = projection * seen;
}
)";

const char* const kModelFragmentBody = R"(
layout(location = 3) uniform bool transparentPass;
layout(location = 4) uniform bool wireframe;

in vec3 position;
in vec3 normal;
in vec2 texCoord;
in vec2 diffuseCoord;
in vec4 colour;
flat in int command;

layout(location = 0) out vec4 opaqueColour;
layout(location = 1) out vec4 weightedColour;
layout(location = 2) out float opacity;

// The key light shines over the camera's left shoulder, the fill light from the lower right; both in view
// space.
const vec3 kKeyDirection = normalize(vec3(-0.45, 0.65, 0.75));
const vec3 kFillDirection = normalize(vec3(0.7, -0.1, 0.5));
const vec3 kKeyColour = vec3(0.70, 0.67, 0.63);
const vec3 kFillColour = vec3(0.12, 0.14, 0.16);
const vec3 kSkyColour = vec3(0.20, 0.22, 0.25);
const vec3 kGroundColour = vec3(0.13, 0.12, 0.11);

vec3 linear(vec3 encoded) {
    vec3 colour = max(encoded, 0.0);
    return mix(colour / 12.92, pow((colour + 0.055) / 1.055, vec3(2.4)), step(0.04045, colour));
}

// Files wind faces and point normals in both directions: a surface is lit on its visible side.
vec3 facingNormal() {
    vec3 flatNormal = cross(dFdx(position), dFdy(position));
    flatNormal = dot(flatNormal, position) > 0.0 ? -flatNormal : flatNormal;
    flatNormal = length(flatNormal) > 0.0 ? normalize(flatNormal) : vec3(0.0, 0.0, 1.0);
    float size = length(normal);
    if (!(size > 1e-6) || isinf(size))
        return flatNormal;
    vec3 smoothNormal = normal / size;
    return dot(smoothNormal, flatNormal) < 0.0 ? -smoothNormal : smoothNormal;
}

vec3 highlight(vec3 light, vec3 facing, vec3 eye, float exponent) {
    float along = max(dot(facing, normalize(light + eye)), 0.0);
    // A wide highlight is dimmer, since it spreads the same reflected light.
    float strength = (exponent + 2.0) / (exponent + 40.0);
    return vec3(strength * pow(along, exponent) * step(0.0, dot(facing, light)));
}

void main() {
    VelglMaterial material = velglMaterial(command);
    vec4 texel = texture(velgl_map_Kd, diffuseCoord);
    // A black surface with a texture is not intended to be black: the texture defines its colour.
    bool isTextureOnly = material.Kd == vec3(0.0) && velglHas_map_Kd();
    vec3 base = linear(isTextureOnly ? vec3(1.0) : material.Kd) * linear(texel.rgb) * linear(colour.rgb);
    float alpha = clamp(material.d, 0.0, 1.0) * texel.a * clamp(colour.a, 0.0, 1.0);
    if (transparentPass ? (alpha >= kMinOpaque || alpha < kMinVisible) : alpha < kMinOpaque)
        discard;

    vec3 facing = facingNormal();
    vec3 eye = normalize(-position);
    vec3 light = mix(kGroundColour, kSkyColour, 0.5 + 0.5 * facing.y) +
                 kKeyColour * max(dot(facing, kKeyDirection), 0.0) +
                 kFillColour * max(dot(facing, kFillDirection), 0.0);
    vec3 diffuse = base * (wireframe ? vec3(0.5) : light);

    float exponent = max(material.Ns, 0.0) * texture(velgl_map_Ns, texCoord).r;
    vec3 shine = vec3(0.0);
    if (exponent >= 1.0 && !wireframe)
        shine = linear(material.Ks) * linear(texture(velgl_map_Ks, texCoord).rgb) * 0.5 *
                (kKeyColour * highlight(kKeyDirection, facing, eye, exponent) +
                 kFillColour * highlight(kFillDirection, facing, eye, exponent));

    if (!transparentPass) {
        opaqueColour = vec4(min(diffuse + shine, 1.0), 1.0);
        return;
    }
    // Glass reflects most when seen edge on, and a highlight hides what is behind it.
    float edge = pow(1.0 - abs(dot(facing, eye)), 4.0);
    float hidden = clamp(max(mix(alpha, 1.0, 0.35 * edge), max(shine.r, max(shine.g, shine.b))), 0.0, 1.0);
    vec3 reflected = min(diffuse * alpha + shine + 0.3 * (hidden - alpha) * kSkyColour, 1.0);
    float weight = clamp(pow(1.0 - 0.98 * gl_FragCoord.z, 3.0) * 1e3, 1e-2, 1e3);
    weightedColour = vec4(reflected, hidden) * weight;
    opacity = hidden;
}
)";

} // namespace

const QByteArray kCoveringVertexShader = R"(#version 430 core
void main() {
    gl_Position = vec4(vec2((gl_VertexID << 1) & 2, gl_VertexID & 2) * 2.0 - 1.0, 0.0, 1.0);
}
)";

const QByteArray kCompositionFragmentShader = R"(#version 430 core
layout(location = 0) uniform sampler2D opaque;
layout(location = 1) uniform sampler2D weighted;
layout(location = 2) uniform sampler2D showsThrough;
layout(location = 3) uniform vec4 background;
out vec4 picture;

vec3 encoded(vec3 colour) {
    return mix(colour * 12.92, 1.055 * pow(colour, vec3(1.0 / 2.4)) - 0.055, step(0.0031308, colour));
}

void main() {
    // The first row of an image is the top one.
    ivec2 at = ivec2(gl_FragCoord.x, textureSize(opaque, 0).y - 1 - int(gl_FragCoord.y));
    vec4 below = texelFetch(opaque, at, 0);
    below += background * (1.0 - below.a);
    vec4 sum = texelFetch(weighted, at, 0);
    float through = texelFetch(showsThrough, at, 0).r;
    vec3 glass = sum.a > 0.0 ? sum.rgb / sum.a : vec3(0.0);
    vec4 all = vec4(glass, 1.0) * (1.0 - through) + below * through;
    picture = all.a > 0.0 ? vec4(encoded(clamp(all.rgb / all.a, 0.0, 1.0)), all.a) : vec4(0.0);
}
)";

QByteArray modelVertexShader(const QString& materials) {
    return head(ShaderStage::Vertex, materials) + kModelVertexBody;
}

QByteArray modelFragmentShader(const QString& materials) {
    return head(ShaderStage::Fragment, materials) + constant("kMinOpaque", kMinOpaque) +
           constant("kMinVisible", kMinVisible) + kModelFragmentBody;
}

} // namespace Atelier::Vel::Tool
