#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Atelier::Vel::Tool {

/// Fragments of this opacity and more are opaque.
constexpr float kMinOpaque = 0.996F;
/// Fragments of less opacity are not drawn.
constexpr float kMinVisible = 0.002F;

/// How the colours of materials and vertices are read: as sRGB, as linear light, or not at all, which shows
/// all surfaces in one light grey.
enum class MaterialColours { SRgb, Linear, None };

/// What a fragment shader computes: the layers of a PictureTarget, or only how far opaque surfaces are from
/// the plane of the camera.
enum class FragmentOutput { Layers, Depth };

/// The location of the vertex attribute "va_Color".
constexpr unsigned int kColourLocation = 7;

/// Blends the layers of a PictureTarget into the final picture. The opacity of a pixel is the share that the
/// model covers, with any background. The uniforms `opaque`, `weighted` and `showsThrough` are its
/// layers, `background` is in linear light.
extern const QByteArray kCompositionFragmentShader;

/// The shaders that draw a model whose materials have the plan `materials`. Their declarations are made from
/// the registered plans.
QByteArray modelVertexShader(const QString& materials);
QByteArray modelFragmentShader(const QString& materials, FragmentOutput output = FragmentOutput::Layers);

} // namespace Atelier::Vel::Tool
