#include "shaders.h"

#include <limits>

#include <velgl/shaderinterface.h>

namespace Atelier::Vel::Tool {

namespace {

QByteArray head(ShaderStage stage, const QString& materials) {
    const ShaderPlans plans{materials, QStringLiteral("InstanceInfo")};
    const QByteArray layout =
        materials == QLatin1String("OBJMaterialExtended") ? "#define IS_EXTENDED\n" : "";
    return "#version 430 core\n" + layout + shaderInterface(stage, plans);
}

QByteArray constant(const char* name, float value) {
    constexpr int kDigits = std::numeric_limits<float>::max_digits10;
    return QByteArray("const float ") + name + " = " + QByteArray::number(double(value), 'f', kDigits) +
           ";\n";
}

QByteArray constant(const char* name, MaterialColours value) {
    return QByteArray("const int ") + name + " = " + QByteArray::number(static_cast<int>(value)) + ";\n";
}

const char* const kModelVertexBody = R"(
in vec3 va_Vertex;
in vec3 va_Normal;
in vec2 va_TexCoord;
layout(location = 7) in vec4 va_Color; // white for a model that has none

uniform vec4 framing; // the model's centre, and the factor that scales it to unit size
uniform mat4 view;
uniform mat4 projection;

out vec3 position; // in view space
out vec3 towardsEye;
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
    bool isPerspective = projection[2][3] != 0.0;
    towardsEye = isPerspective ? -seen.xyz : vec3(0.0, 0.0, 1.0);
    normal = mat3(view) * mat3(instance.ModelNormalMatrix) * va_Normal;
    texCoord = va_TexCoord;
    diffuseCoord = va_TexCoord;
#ifdef IS_EXTENDED
    VelglMaterial material = velglMaterial(command);
    diffuseCoord = va_TexCoord * material.map_scale + material.map_offset;
#endif
    colour = va_Color;
    gl_Position = projection * seen;
}
)";

const char* const kModelFragmentBody = R"(
uniform bool transparentPass;
uniform bool wireframe;
uniform int colourReading; // see MaterialColours
uniform float exposure;    // a factor
uniform bool hasOcclusion;
uniform sampler2D occlusion; // of the tile

in vec3 position;
in vec3 towardsEye;
in vec3 normal;
in vec2 texCoord;
in vec2 diffuseCoord;
in vec4 colour;
flat in int command;

#ifdef DEPTH_ONLY
layout(location = 0) out float depth;
#else
layout(location = 0) out vec4 opaqueColour;
layout(location = 1) out vec4 weightedColour;
layout(location = 2) out float opacity;
#endif

// The key light shines over the camera's left shoulder, the fill light from the lower right; both in view
// space.
const vec3 kKeyDirection = normalize(vec3(-0.45, 0.65, 0.75));
const vec3 kFillDirection = normalize(vec3(0.7, -0.1, 0.5));
const vec3 kKeyColour = vec3(0.70, 0.67, 0.63);
const vec3 kFillColour = vec3(0.12, 0.14, 0.16);
const vec3 kSkyColour = vec3(0.20, 0.22, 0.25);
const vec3 kGroundColour = vec3(0.13, 0.12, 0.11);
const vec3 kClay = vec3(0.6);

vec3 linear(vec3 encoded) {
    vec3 colour = max(encoded, 0.0);
    return mix(colour / 12.92, pow((colour + 0.055) / 1.055, vec3(2.4)), step(0.04045, colour));
}

// The colour of a material or a vertex as light.
vec3 light(vec3 colour) {
    return colourReading == kLinearColours ? max(colour, 0.0) : linear(colour);
}

// The texel of map_Kd. In many images, transparent texels are black beside texels of any colour. So that they
// darken no edge, an enlarged texture is filtered with its colours weighted by their opacity.
vec4 diffuseTexel() {
    vec4 texel = texture(velgl_map_Kd, diffuseCoord);
    vec2 size = vec2(textureSize(velgl_map_Kd, 0));
    vec2 across = dFdx(diffuseCoord) * size;
    vec2 along = dFdy(diffuseCoord) * size;
    float texelsPerPixel = sqrt(max(dot(across, across), dot(along, along)));
    if (texel.a <= 0.0 || texel.a >= kMinOpaque || texelsPerPixel >= 2.0)
        return texel;
    vec2 part = fract(diffuseCoord * size - 0.5);
    vec4 opacity = textureGather(velgl_map_Kd, diffuseCoord, 3) *
                   vec4((1.0 - part.x) * part.y, part.x * part.y, part.x * (1.0 - part.y),
                        (1.0 - part.x) * (1.0 - part.y));
    vec3 weighted = vec3(dot(textureGather(velgl_map_Kd, diffuseCoord, 0), opacity),
                         dot(textureGather(velgl_map_Kd, diffuseCoord, 1), opacity),
                         dot(textureGather(velgl_map_Kd, diffuseCoord, 2), opacity));
    float sum = dot(opacity, vec4(1.0));
    if (sum > 0.0)
        texel.rgb = mix(weighted / sum, texel.rgb, clamp(texelsPerPixel - 1.0, 0.0, 1.0));
    return texel;
}

float opacityOf(VelglMaterial material, vec4 texel) {
    return clamp(material.d, 0.0, 1.0) * texel.a * clamp(colour.a, 0.0, 1.0);
}

// A normal nearly in the plane of its face has no certain side: the normal of the face replaces it below the
// first cosine of their angle, and blends with it up to the second one.
const float kPlanar = 0.05;
const float kUpright = 0.15;

// Files wind faces and point normals in both directions: a surface is lit on its visible side.
vec3 facingNormal() {
    vec3 flatNormal = cross(dFdx(position), dFdy(position));
    flatNormal = dot(flatNormal, towardsEye) < 0.0 ? -flatNormal : flatNormal;
    flatNormal = length(flatNormal) > 0.0 ? normalize(flatNormal) : vec3(0.0, 0.0, 1.0);
    float size = length(normal);
    if (!(size > 1e-6) || isinf(size))
        return flatNormal;
    float along = dot(normal / size, flatNormal);
    vec3 smoothNormal = along < 0.0 ? -normal / size : normal / size;
    if (abs(along) >= kUpright)
        return smoothNormal;
    return normalize(mix(flatNormal, smoothNormal, smoothstep(kPlanar, kUpright, abs(along))));
}

#ifdef IS_EXTENDED
// The normal that the normal map gives to a surface. Without tangents in the file, the directions of the
// texture coordinates follow from how they and the position change on the screen.
vec3 mappedNormal(vec3 facing) {
    vec3 aside = cross(facing, dFdx(position));
    vec3 above = cross(dFdy(position), facing);
    vec2 coordAside = dFdx(texCoord);
    vec2 coordAbove = dFdy(texCoord);
    vec3 tangent = above * coordAside.x + aside * coordAbove.x;
    vec3 bitangent = above * coordAside.y + aside * coordAbove.y;
    float size = max(dot(tangent, tangent), dot(bitangent, bitangent));
    vec3 texel = texture(velgl_norm, texCoord).rgb;
    // White is no direction: the map is missing.
    if (!velglHas_norm() || !(size > 0.0) || isinf(size) || texel == vec3(1.0))
        return facing;
    float scale = inversesqrt(size);
    vec3 mapped = mat3(tangent * scale, bitangent * scale, facing) * (texel * 2.0 - 1.0);
    return dot(mapped, mapped) > 1e-6 ? normalize(mapped) : facing;
}
#endif

vec3 highlight(vec3 light, vec3 facing, vec3 eye, float exponent) {
    float along = max(dot(facing, normalize(light + eye)), 0.0);
    // A wide highlight is dimmer, since it spreads the same reflected light.
    float strength = (exponent + 2.0) / (exponent + 40.0);
    return vec3(strength * pow(along, exponent) * step(0.0, dot(facing, light)));
}

#ifdef DEPTH_ONLY
void main() {
    if (opacityOf(velglMaterial(command), diffuseTexel()) < kMinOpaque)
        discard;
    depth = -position.z;
}
#else
void main() {
    VelglMaterial material = velglMaterial(command);
    vec4 texel = diffuseTexel();
    float alpha = opacityOf(material, texel);
    if (transparentPass ? (alpha >= kMinOpaque || alpha < kMinVisible) : alpha < kMinOpaque)
        discard;

    // A black surface with a texture is not intended to be black: the texture defines its colour.
    bool isTextureOnly = material.Kd == vec3(0.0) && velglHas_map_Kd();
    vec3 base = light(isTextureOnly ? vec3(1.0) : material.Kd) * linear(texel.rgb) * light(colour.rgb);
    if (colourReading == kNoColours)
        base = kClay;

    vec3 facing = facingNormal();
#ifdef IS_EXTENDED
    facing = mappedNormal(facing);
#endif
    vec3 eye = normalize(towardsEye);
    vec3 incoming = mix(kGroundColour, kSkyColour, 0.5 + 0.5 * facing.y) +
                    kKeyColour * max(dot(facing, kKeyDirection), 0.0) +
                    kFillColour * max(dot(facing, kFillDirection), 0.0);
    // A texture defines what shines on a material that does not shine, as it does for black materials.
    bool isGlowOfTexture = material.Ke == vec3(0.0) && velglHas_map_Ke();
    vec3 glow = light(isGlowOfTexture ? vec3(1.0) : material.Ke) * linear(texture(velgl_map_Ke, texCoord).rgb);
    if (colourReading == kNoColours)
        glow = vec3(0.0);
    if (hasOcclusion && !transparentPass)
        incoming *= texelFetch(occlusion, ivec2(gl_FragCoord.xy), 0).r;
    vec3 diffuse = wireframe ? 0.5 * (base + glow) : base * incoming + glow;

    float exponent = max(material.Ns, 0.0) * texture(velgl_map_Ns, texCoord).r;
    vec3 shine = vec3(0.0);
    if (exponent >= 1.0 && !wireframe)
        shine = light(material.Ks) * linear(texture(velgl_map_Ks, texCoord).rgb) * 0.5 *
                (kKeyColour * highlight(kKeyDirection, facing, eye, exponent) +
                 kFillColour * highlight(kFillDirection, facing, eye, exponent));

    if (!transparentPass) {
        opaqueColour = vec4(min((diffuse + shine) * exposure, 1.0), 1.0);
        return;
    }
    // Glass reflects most when seen edge on, and a highlight hides what is behind it. A hole in a texture is
    // no glass and reflects nothing.
    float edge = pow(1.0 - abs(dot(facing, eye)), 4.0);
    float glass = clamp(material.d, 0.0, 1.0) * clamp(colour.a, 0.0, 1.0);
    float hidden = clamp(max(mix(glass, 1.0, 0.35 * edge), max(shine.r, max(shine.g, shine.b))), 0.0, 1.0);
    vec3 reflected = diffuse * glass + shine + 0.3 * (hidden - glass) * kSkyColour;
    reflected = min(reflected * exposure, 1.0) * texel.a;
    hidden *= texel.a;
    float weight = clamp(pow(1.0 - 0.98 * gl_FragCoord.z, 3.0) * 1e3, 1e-2, 1e3);
    // Else the faint edge of a texture in front would count more than a pane behind it. Smaller weights than
    // the limit would leave too few digits in half-precision floats.
    weight = max(weight * texel.a * texel.a, min(weight, 0.1));
    weightedColour = vec4(reflected, hidden) * weight;
    opacity = hidden;
}
#endif
)";

} // namespace

const QByteArray kCompositionFragmentShader = R"(#version 430 core
uniform sampler2D opaque;
uniform sampler2D weighted;
uniform sampler2D showsThrough;
uniform vec4 background;
out vec4 picture;

vec3 encoded(vec3 colour) {
    return mix(colour * 12.92, 1.055 * pow(colour, vec3(1.0 / 2.4)) - 0.055, step(0.0031308, colour));
}

void main() {
    ivec2 at = ivec2(gl_FragCoord.xy);
    vec4 below = texelFetch(opaque, at, 0);
    float through = texelFetch(showsThrough, at, 0).r;
    float coverage = 1.0 - through + below.a * through;
    below += background * (1.0 - below.a);
    vec4 sum = texelFetch(weighted, at, 0);
    vec3 glass = sum.a > 0.0 ? sum.rgb / sum.a : vec3(0.0);
    vec4 all = vec4(glass, 1.0) * (1.0 - through) + below * through;
    picture = all.a > 0.0 ? vec4(encoded(clamp(all.rgb / all.a, 0.0, 1.0)), coverage) : vec4(0.0);
}
)";

QByteArray modelVertexShader(const QString& materials) {
    return head(ShaderStage::Vertex, materials) + kModelVertexBody;
}

QByteArray modelFragmentShader(const QString& materials, FragmentOutput output) {
    return head(ShaderStage::Fragment, materials) +
           (output == FragmentOutput::Depth ? "#define DEPTH_ONLY\n" : "") +
           constant("kMinOpaque", kMinOpaque) + constant("kMinVisible", kMinVisible) +
           constant("kLinearColours", MaterialColours::Linear) +
           constant("kNoColours", MaterialColours::None) + kModelFragmentBody;
}

} // namespace Atelier::Vel::Tool
