#pragma once

#include <QtCore/QByteArray>

namespace Atelier::Vel::Tool {

/// The depth of a pixel that shows nothing.
constexpr float kNoDepth = 1e30F;

/// How far from a pixel the blur of the occlusion reads, in pixels.
constexpr int kBlurReach = 2;

/// Computes the light that reaches each pixel from all around. The uniforms are `depths`, the texture of the
/// depths of the surroundings; `firstDepth` and `firstPixel`, the places in the picture of the first pixels
/// of that texture and of the target; `pictureSize`; `projection`, that of the whole picture; and `radius` in
/// pixels.
extern const QByteArray kOcclusionFragmentShader;

/// Removes the pattern of the samples, without mixing surfaces. Further uniforms are `light`, the texture to
/// blur, which is larger than the target by kBlurReach, and `largestStep`, the largest step in depth within a
/// surface, relative to the depth.
extern const QByteArray kOcclusionBlurFragmentShader;

} // namespace Atelier::Vel::Tool
