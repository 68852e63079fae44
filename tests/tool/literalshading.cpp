#include "literalshading.h"

#include <algorithm>
#include <cmath>

namespace Atelier::Vel::Testing {

namespace {

Triple operator+(const Triple& a, const Triple& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

Triple operator*(const Triple& a, const Triple& b) {
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}

Triple operator*(const Triple& a, double factor) {
    return {a.x * factor, a.y * factor, a.z * factor};
}

double dot(const Triple& a, const Triple& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Triple unit(const Triple& a) {
    return a * (1 / std::sqrt(dot(a, a)));
}

double linear(double encoded) {
    if (encoded < 0)
        return 0;
    return encoded < 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
}

Triple linear(const Triple& encoded) {
    return {linear(encoded.x), linear(encoded.y), linear(encoded.z)};
}

Triple linear(const QColor& encoded) {
    return {linear(encoded.redF()), linear(encoded.greenF()), linear(encoded.blueF())};
}

double encoded(double colour) {
    return colour < 0.0031308 ? 12.92 * colour : 1.055 * std::pow(colour, 1 / 2.4) - 0.055;
}

double encodedByte(double colour) {
    return 255 * encoded(std::clamp(colour, 0.0, 1.0));
}

struct Light {
    Triple direction;
    Triple colour;
};

Light keyLight() {
    return {unit({-0.45, 0.65, 0.75}), {0.70, 0.67, 0.63}};
}

Light fillLight() {
    return {unit({0.7, -0.1, 0.5}), {0.12, 0.14, 0.16}};
}

constexpr Triple kSky = {0.20, 0.22, 0.25};
constexpr Triple kGround = {0.13, 0.12, 0.11};

// Perspective has the eye at the origin.
Triple towardsEye(const Fragment& fragment) {
    return fragment.isParallel ? Triple{0, 0, 1} : unit(fragment.position * -1);
}

Triple facing(const Fragment& fragment) {
    Triple flat = unit(fragment.flatNormal);
    if (dot(flat, towardsEye(fragment)) < 0)
        flat = flat * -1;
    const double length = std::sqrt(dot(fragment.normal, fragment.normal));
    constexpr double kLargestLength = 1.8e19; // the square of a larger one is no float
    if (!(length > 1e-6 && length < kLargestLength))
        return flat;
    const Triple smooth = fragment.normal * (1 / length);
    const double cosine = std::abs(dot(smooth, flat));
    const double share = std::clamp((cosine - 0.05) / 0.1, 0.0, 1.0);
    const double blend = share * share * (3 - 2 * share);
    const Triple turned = dot(smooth, flat) < 0 ? smooth * -1 : smooth;
    return unit(turned * blend + flat * (1 - blend));
}

Triple diffuseLight(const Triple& facing) {
    const double up = 0.5 + 0.5 * facing.y;
    Triple light = kSky * up + kGround * (1 - up);
    for (const Light& lamp : {keyLight(), fillLight()})
        light = light + lamp.colour * std::max(dot(facing, lamp.direction), 0.0);
    return light;
}

Triple highlights(const Triple& facing, const Triple& eye, double exponent) {
    const double strength = (exponent + 2) / (exponent + 40);
    Triple sum;
    for (const Light& lamp : {keyLight(), fillLight()}) {
        const double along = std::max(dot(facing, unit(lamp.direction + eye)), 0.0);
        if (dot(facing, lamp.direction) >= 0)
            sum = sum + lamp.colour * (strength * std::pow(along, exponent));
    }
    return sum;
}

Triple atMostOne(const Triple& colour) {
    return {std::min(colour.x, 1.0), std::min(colour.y, 1.0), std::min(colour.z, 1.0)};
}

Triple ofMaterial(const Fragment& fragment, const Triple& colour) {
    const Triple positive = {std::max(colour.x, 0.0), std::max(colour.y, 0.0), std::max(colour.z, 0.0)};
    return fragment.isLinear ? positive : linear(colour);
}

Triple baseColour(const Fragment& fragment) {
    const bool isBlack = fragment.diffuse.x == 0 && fragment.diffuse.y == 0 && fragment.diffuse.z == 0;
    const Triple own = isBlack && fragment.hasMap ? Triple{1, 1, 1} : fragment.diffuse;
    return ofMaterial(fragment, own) * linear(fragment.map);
}

Triple glow(const Fragment& fragment) {
    const Triple& own = fragment.emission;
    const bool isBlack = own.x == 0 && own.y == 0 && own.z == 0;
    const Triple light = isBlack && fragment.hasEmissionMap ? Triple{1, 1, 1} : ofMaterial(fragment, own);
    return light * linear(fragment.emissionMap);
}

Triple shine(const Fragment& fragment, const Triple& facing, const Triple& eye) {
    const double exponent = std::max(fragment.exponent, 0.0) * fragment.exponentMap;
    if (exponent < 1 || fragment.isWireframe)
        return {};
    return ofMaterial(fragment, fragment.specular) * linear(fragment.specularMap) *
           highlights(facing, eye, exponent) * 0.5;
}

/// The light from a fragment.
struct Parts {
    Triple diffuse;
    Triple shine;
    double exposure; ///< a factor
};

// `solid` is the share of the texture that is there, `glass` the opacity of that.
void addGlass(Shade& shade, const Parts& parts, double glass, double solid, double alongEye) {
    const Triple& shine = parts.shine;
    const double edge = std::pow(1 - std::abs(alongEye), 4);
    const double atEdge = glass + (1 - glass) * 0.35 * edge;
    const double hidden = std::clamp(std::max({atEdge, shine.x, shine.y, shine.z}), 0.0, 1.0);
    const Triple light = parts.diffuse * glass + shine + kSky * (0.3 * (hidden - glass));
    shade.colour = atMostOne(light * parts.exposure) * solid;
    shade.hidden = hidden * solid;
}

} // namespace

Shade shaded(const Fragment& fragment) {
    const Triple normal = facing(fragment);
    const Triple eye = towardsEye(fragment);
    const Triple light = fragment.isWireframe ? Triple{0.5, 0.5, 0.5} : diffuseLight(normal);
    const Parts parts = {(baseColour(fragment) * light) + glow(fragment) * (fragment.isWireframe ? 0.5 : 1),
                         shine(fragment, normal, eye), std::exp2(fragment.exposure)};
    const double glass = std::clamp(fragment.opacity, 0.0, 1.0);
    const double alpha = glass * fragment.map.alphaF();
    Shade shade;
    shade.isOpaque = alpha >= 0.996;
    shade.isVisible = alpha >= 0.002;
    if (shade.isOpaque)
        shade.colour = atMostOne((parts.diffuse + parts.shine) * parts.exposure);
    else
        addGlass(shade, parts, glass, fragment.map.alphaF(), dot(normal, eye));
    const double near = std::clamp(std::pow(1 - 0.98 * fragment.depth, 3) * 1e3, 1e-2, 1e3);
    shade.weight = std::max(near * fragment.map.alphaF() * fragment.map.alphaF(), std::min(near, 0.1));
    return shade;
}

Pixel composed(const std::vector<Fragment>& fragments, const QColor& background) {
    Triple below = background.isValid() ? linear(background) : Triple();
    double belowOpacity = background.isValid() ? 1 : 0;
    double nearestWall = 1;
    for (const Fragment& fragment : fragments) {
        const Shade shade = shaded(fragment);
        if (!shade.isOpaque || fragment.depth > nearestWall)
            continue;
        nearestWall = fragment.depth;
        below = shade.colour;
        belowOpacity = 1;
    }
    Triple colours;
    double weights = 0;
    double through = 1;
    for (const Fragment& fragment : fragments) {
        const Shade shade = shaded(fragment);
        if (shade.isOpaque || !shade.isVisible || fragment.depth > nearestWall)
            continue;
        colours = colours + shade.colour * shade.weight;
        weights += shade.hidden * shade.weight;
        through *= 1 - shade.hidden;
    }
    const Triple glass = weights > 0 ? colours * (1 / weights) : Triple();
    const double opacity = 1 - through + belowOpacity * through;
    if (opacity <= 0)
        return {};
    const Triple all = (glass * (1 - through) + below * through) * (1 / opacity);
    return {encodedByte(all.x), encodedByte(all.y), encodedByte(all.z), 255 * opacity};
}

} // namespace Atelier::Vel::Testing
