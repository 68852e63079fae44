#include "check/extentcheck.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace Atelier::Vel {

namespace {

// A step of positions that is larger than this share of the model can be seen when the model fills a screen
// several times.
constexpr double kVisibleStep = 1e-5;
// Things that people model are rarely outside of these sizes in metres.
constexpr double kSmall = 0.01;
constexpr double kLarge = 10'000;

struct Extent {
    double low[3] = {DBL_MAX, DBL_MAX, DBL_MAX};
    double high[3] = {-DBL_MAX, -DBL_MAX, -DBL_MAX};
    bool isValid = false;

    double size() const { return std::max({high[0] - low[0], high[1] - low[1], high[2] - low[2]}); }
    double largestCoordinate() const {
        double largest = 0;
        for (int axis = 0; axis < 3; ++axis)
            largest = std::max({largest, std::fabs(low[axis]), std::fabs(high[axis])});
        return largest;
    }
};

Extent extentOf(const float* positions, const std::vector<quint8>& used) {
    Extent extent;
    for (std::size_t vertex = 0; vertex < used.size(); ++vertex) {
        const float* const position = positions + 3 * vertex;
        if (used[vertex] == 0 || !std::isfinite(position[0] + position[1] + position[2]))
            continue;
        extent.isValid = true;
        for (int axis = 0; axis < 3; ++axis) {
            extent.low[axis] = std::min(extent.low[axis], double(position[axis]));
            extent.high[axis] = std::max(extent.high[axis], double(position[axis]));
        }
    }
    return extent;
}

// The distance between neighbouring floats of this magnitude.
double stepAt(double magnitude) {
    const auto value = static_cast<float>(magnitude);
    return double(std::nextafter(value, FLT_MAX)) - double(value);
}

QString number(double value) {
    return QString::number(value, 'g', 3);
}

} // namespace

void examineExtent(const QString& file, const float* positions, const std::vector<quint8>& used,
                   FindingLog& log) {
    const Extent extent = extentOf(positions, used);
    const double size = extent.isValid ? extent.size() : 0;
    if (!(size > 0) || !std::isfinite(size))
        return;
    const double largest = extent.largestCoordinate();
    const double step = stepAt(largest);
    if (step > kVisibleStep * size)
        log.add(CheckCode::FarFromOrigin, {file}, [&](CheckFinding& finding) {
            finding.message =
                QStringLiteral("The model has a size of %1 and coordinates up to %2, where floats "
                               "have steps of %3: %4 % of the size")
                    .arg(number(size), number(largest), number(step), number(100 * step / size));
        });
    if (size < kSmall || size > kLarge)
        log.add(CheckCode::UnusualSize, {file}, [&](CheckFinding& finding) {
            finding.message =
                size < kSmall
                    ? QStringLiteral("The model has a size of %1: its unit may be larger than the metre")
                          .arg(number(size))
                    : QStringLiteral("The model has a size of %1: its unit may be smaller than the metre")
                          .arg(number(size));
        });
}

} // namespace Atelier::Vel
