#pragma once

#include <QtGui/QImage>

namespace Atelier::Vel::Tool {

/// How much of a picture shows the model, and how much of that is nearly black.
struct Brightness {
    qint64 shown = 0; ///< pixels of which the model covers half or more
    qint64 dark = 0;  ///< those in the darkest twentieth of the range, in every channel

    /// Whether most of what is shown is nearly black.
    bool isDark() const { return dark * 2 > shown; }
    Brightness& operator+=(const Brightness& other);
};

/// Looks at a part of a picture whose opacity is the share that the model covers.
/// Requires: `picture` is of Format_RGBA8888 and contains `area`.
Brightness brightnessOf(const QImage& picture, const QRect& area);

/// Sets the opacity of all pixels of `area` to 1.
/// Requires: as brightnessOf().
void makeOpaque(QImage& picture, const QRect& area);

} // namespace Atelier::Vel::Tool
