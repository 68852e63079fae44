#pragma once

#include <QtGui/QImage>

namespace Atelier::Vel::Testing {

/// The difference of two pictures of the same size, on a scale from 0 to 255, including opacity.
struct PictureDifference {
    double mean = 255;       ///< over all channels of all pixels
    double changedShare = 1; ///< of the pixels, those with a channel that is more than kVisibleStep off
};

constexpr int kVisibleStep = 24;

PictureDifference difference(const QImage& a, const QImage& b);

/// The maximum difference of a channel.
int largestStep(QRgb a, QRgb b);

/// The tolerance for pictures of another driver or driver version. Rasterisers place samples slightly
/// differently, which is visible along edges, and filter textures slightly differently, which is invisible.
bool lookTheSame(const PictureDifference& difference);

} // namespace Atelier::Vel::Testing
