#pragma once

#include <memory>

#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QImage>

namespace Atelier::Vel::Tool {

/// Where a picture is drawn: multisampled, linear light, opaque things first and transparent ones after them
/// in any order. A fragment shader writes
///   location 0, opaque pass:      colour, premultiplied, and coverage
///   location 1, transparent pass: colour, premultiplied, and opacity, both times a weight that falls with
///   depth location 2, transparent pass: opacity
/// The transparent surfaces over a pixel are averaged by their weights, so that they need no sorting.
class PictureTarget {
public:
    /// Requires: a current context. Returns: null, and the cause in `error`, when there is no room.
    static std::unique_ptr<PictureTarget> create(QSize size, QString& error);
    ~PictureTarget();
    PictureTarget(const PictureTarget&) = delete;
    PictureTarget& operator=(const PictureTarget&) = delete;

    QSize size() const;
    /// Clears the picture; what is drawn next is opaque.
    void beginOpaque();
    /// What is drawn next is transparent: it is hidden by what is nearer and hides nothing.
    void beginTransparent();
    /// Puts what was drawn over `background`, or over nothing when that is invalid, into `picture`: sRGB, not
    /// premultiplied. Requires: `picture` is of Format_RGBA8888 and has room for size() from `topLeft` on.
    void finish(const QColor& background, QPoint topLeft, QImage& picture);

private:
    PictureTarget();
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel::Tool
