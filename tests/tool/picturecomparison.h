#pragma once

#include <QtGui/QImage>

namespace Atelier::Vel::Testing {

/// How far two pictures of the same size are apart, on a scale from 0 to 255, opacity included.
struct PictureDifference {
    double mean = 255;       ///< over all channels of all pixels
    double changedShare = 1; ///< of the pixels, those with a channel that is more than kVisibleStep off
};

constexpr int kVisibleStep = 24;

PictureDifference difference(const QImage& a, const QImage& b);

/// By how much the channel that differs most does.
int largestStep(QRgb a, QRgb b);

/// The tolerance for pictures of another driver or another version of one: rasterisers place samples a little
/// differently, which shows along edges, and filter textures a little differently, which shows nowhere.
bool lookTheSame(const PictureDifference& difference);

} // namespace Atelier::Vel::Testing
