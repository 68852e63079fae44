#include "picturecomparison.h"

#include <algorithm>
#include <cstdlib>

namespace Atelier::Vel::Testing {

namespace {

constexpr double kMaxMean = 1.5;
constexpr double kMaxChangedShare = 0.02;

} // namespace

PictureDifference difference(const QImage& a, const QImage& b) {
    if (a.isNull() || a.size() != b.size())
        return {};
    // The colour of an uncovered pixel is undefined; premultiplied, it is zero.
    const QImage first = a.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    const QImage second = b.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    double sum = 0;
    int changed = 0;
    for (int y = 0; y < first.height(); ++y)
        for (int x = 0; x < first.width(); ++x) {
            int largest = 0;
            for (int channel = 0; channel < 4; ++channel) {
                const int step = std::abs(int(first.constScanLine(y)[4 * x + channel]) -
                                          int(second.constScanLine(y)[4 * x + channel]));
                sum += step;
                largest = std::max(largest, step);
            }
            changed += largest > kVisibleStep ? 1 : 0;
        }
    const double pixels = double(first.width()) * first.height();
    return {sum / (4 * pixels), changed / pixels};
}

int largestStep(QRgb a, QRgb b) {
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b)), std::abs(qAlpha(a) - qAlpha(b))});
}

bool lookTheSame(const PictureDifference& difference) {
    return difference.mean <= kMaxMean && difference.changedShare <= kMaxChangedShare;
}

} // namespace Atelier::Vel::Testing
