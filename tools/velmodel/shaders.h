#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Atelier::Vel::Tool {

/// Fragments of this opacity and more are opaque.
constexpr float kMinOpaque = 0.996F;
/// Fragments of less opacity are not drawn.
constexpr float kMinVisible = 0.002F;

/// The location of the vertex attribute "va_Color".
constexpr unsigned int kColourLocation = 7;

/// Three vertices without attributes that cover the viewport.
extern const QByteArray kCoveringVertexShader;

/// Blends the layers of a PictureTarget into the final picture. Uniforms 0 to 2 are its textures, 3 is the
/// background in linear light.
extern const QByteArray kCompositionFragmentShader;

/// The shaders that draw a model whose materials have the plan `materials`. Their declarations are made from
/// the registered plans.
QByteArray modelVertexShader(const QString& materials);
QByteArray modelFragmentShader(const QString& materials);

} // namespace Atelier::Vel::Tool
