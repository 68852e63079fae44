#pragma once

#include <memory>

#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QImage>

#include <velgl/renderstate.h>

namespace Atelier::Vel::Tool {

/// The framebuffers that a picture is drawn into: multisampled, in linear light. Opaque surfaces are drawn
/// first, then transparent ones in any order. The outputs of a fragment shader are
/// - location 0, opaque pass: colour, premultiplied, and coverage;
/// - location 1, transparent pass: colour, premultiplied, and opacity, both times a weight that falls with
///   depth;
/// - location 2, transparent pass: opacity.
///
/// The transparent surfaces over a pixel are averaged by their weights, so that they need not be sorted.
class PictureTarget {
public:
    static constexpr int kSamples = 8; ///< of each pixel, or the driver's maximum if that is less

    /// Requires: a current context. Returns: null, and the cause in `error`, if there is not enough memory.
    static std::unique_ptr<PictureTarget> create(QSize size, QString& error, int samples = kSamples);
    ~PictureTarget();
    PictureTarget(const PictureTarget&) = delete;
    PictureTarget& operator=(const PictureTarget&) = delete;

    /// Makes it a target of another size. Returns: false, and the cause in `error`, if there is not enough
    /// memory; it must not be used then.
    bool resize(QSize size, QString& error, int samples = kSamples);
    QSize size() const;
    /// What create() or resize() was given.
    int samples() const;
    /// Clears the picture and begins the opaque pass. Until finish(), the target is bound.
    void beginOpaque(RenderState::Fill fill);
    /// Begins the transparent pass, whose surfaces are hidden by nearer opaque ones and hide nothing.
    void beginTransparent(RenderState::Fill fill);
    /// Blends the result over `background`, or over transparency if that is invalid, and writes it into
    /// `picture` in sRGB, not premultiplied. The opacity is the share of each pixel that was drawn to.
    /// Requires: `picture` is of Format_RGBA8888 and contains the rectangle of size() at `topLeft`.
    /// Returns: false, and the cause in `error`, if OpenGL cannot do that.
    bool finish(const QColor& background, QPoint topLeft, QImage& picture, QString& error);
    /// The same, into the framebuffer of that OpenGL name, at `lowerLeft`.
    bool present(const QColor& background, QPoint lowerLeft, unsigned int framebuffer, QString& error);

private:
    PictureTarget();
    // Blends the result over `background`.
    bool compose(const QColor& background, QString& error);
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel::Tool
