#include "occlusionshaders.h"

namespace Atelier::Vel::Tool {

// All places are whole pixels of the picture, so that a tile computes what the whole picture would: the same
// numbers by the same operations.
const QByteArray kOcclusionFragmentShader = R"(#version 430 core
uniform sampler2D depths;
uniform vec2 firstDepth; // whole numbers
uniform vec2 firstPixel;
uniform vec2 pictureSize;
uniform mat4 projection;
uniform int radius;
out float light;

const int kSamples = 24;
const float kTurns = 7.0; // of the spiral of samples; without a common divisor with their number
const float kTwoPi = 6.28318530718;
const float kStrength = 7.0;
const float kDarkest = 0.25;
// What rises at a smaller angle over the plane of a pixel, by its sine, does not shade it: facets of a round
// surface.
const float kBias = 0.12;

float depthAt(ivec2 place) {
    return texelFetch(depths, place - ivec2(firstDepth), 0).r;
}

bool isNothing(float depth) {
    return depth > 1e29;
}

// In view space.
vec3 positionAt(ivec2 place, float depth) {
    vec2 seen = (vec2(place) + 0.5) / pictureSize * 2.0 - 1.0;
    float w = projection[3][3] - projection[2][3] * depth;
    vec2 scaled = seen * w + projection[2].xy * depth - projection[3].xy;
    return vec3(scaled / vec2(projection[0][0], projection[1][1]), -depth);
}

// From a pixel to its neighbour on the same surface, which is the one with the smaller step in depth.
vec3 slope(ivec2 place, vec3 position, ivec2 direction) {
    float next = depthAt(place + direction);
    float last = depthAt(place - direction);
    return abs(next + position.z) < abs(last + position.z)
               ? positionAt(place + direction, next) - position
               : position - positionAt(place - direction, last);
}

void main() {
    ivec2 place = ivec2(gl_FragCoord.xy) + ivec2(firstPixel);
    float depth = depthAt(place);
    light = 1.0;
    if (isNothing(depth))
        return;
    vec3 position = positionAt(place, depth);
    vec3 facing = cross(slope(place, position, ivec2(1, 0)), slope(place, position, ivec2(0, 1)));
    if (!(length(facing) > 0.0))
        return;
    facing = normalize(facing);
    float w = projection[3][3] - projection[2][3] * depth;
    float reach = 2.0 * w / (projection[0][0] * pictureSize.x) * float(radius);
    // Sixteen neighbours turn the spiral differently; the blur averages them.
    int turn = (place.x & 3) * 4 + ((place.y + 2 * (place.x & 1)) & 3);
    float sum = 0.0;
    for (int number = 0; number < kSamples; ++number) {
        float share = (float(number) + 0.5) / float(kSamples);
        float angle = kTwoPi * (share * kTurns + float(turn) / 16.0);
        ivec2 other = place + ivec2(round(float(radius) * share * vec2(cos(angle), sin(angle))));
        float otherDepth = depthAt(other);
        if (isNothing(otherDepth))
            continue;
        vec3 way = positionAt(other, otherDepth) - position;
        float distance = length(way);
        float near = max(1.0 - distance / reach, 0.0);
        float rise = distance > 0.0 ? dot(way, facing) / distance : 0.0;
        sum += near * max(rise - kBias, 0.0);
    }
    light = clamp(1.0 - kStrength / float(kSamples) * sum, kDarkest, 1.0);
}
)";

const QByteArray kOcclusionBlurFragmentShader = R"(#version 430 core
uniform sampler2D depths;
uniform vec2 firstDepth;
uniform vec2 firstPixel;
uniform sampler2D light;
uniform float largestStep;
out float blurred;

void main() {
    ivec2 here = ivec2(gl_FragCoord.xy);
    ivec2 inDepths = here + ivec2(firstPixel - firstDepth);
    float depth = texelFetch(depths, inDepths, 0).r;
    float sum = 0.0;
    float count = 0.0;
    for (int y = -1; y <= 2; ++y)
        for (int x = -1; x <= 2; ++x) {
            float other = texelFetch(depths, inDepths + ivec2(x, y), 0).r;
            if (abs(other - depth) > largestStep * depth)
                continue;
            sum += texelFetch(light, here + ivec2(x, y) + 2, 0).r;
            count += 1.0;
        }
    blurred = sum / count;
}
)";

} // namespace Atelier::Vel::Tool
