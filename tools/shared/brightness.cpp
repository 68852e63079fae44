#include "brightness.h"

#include <algorithm>

namespace Atelier::Vel::Tool {

namespace {

constexpr int kBytes = 4; // of a pixel
constexpr uchar kHalf = 128;
constexpr uchar kDarkest = 255 / 20;

bool isDark(const uchar* pixel) {
    return std::max({pixel[0], pixel[1], pixel[2]}) <= kDarkest;
}

} // namespace

Brightness& Brightness::operator+=(const Brightness& other) {
    shown += other.shown;
    dark += other.dark;
    return *this;
}

Brightness brightnessOf(const QImage& picture, const QRect& area) {
    Brightness result;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        const uchar* pixel = picture.constScanLine(y) + std::ptrdiff_t(area.left()) * kBytes;
        for (int x = 0; x < area.width(); ++x, pixel += kBytes) {
            const bool isShown = pixel[3] >= kHalf;
            result.shown += isShown ? 1 : 0;
            result.dark += isShown && isDark(pixel) ? 1 : 0;
        }
    }
    return result;
}

void makeOpaque(QImage& picture, const QRect& area) {
    for (int y = area.top(); y <= area.bottom(); ++y) {
        uchar* pixel = picture.scanLine(y) + std::ptrdiff_t(area.left()) * kBytes;
        for (int x = 0; x < area.width(); ++x, pixel += kBytes)
            pixel[3] = 255;
    }
}

} // namespace Atelier::Vel::Tool
