#pragma once

#include <algorithm>
#include <limits>

#include <QtCore/QtGlobal>

namespace Atelier::Vel::Testing {

// With fewer rounds, comparisons of random cases would not meet each kind of case any more.
constexpr double kMinScale = 0.05;

/// VELMODEL_TEST_SCALE: above 1 for long runs, down to kMinScale for short ones while one edits. 1 if it is
/// not set.
inline double testScale() {
    bool isNumber = false;
    const double scale = qEnvironmentVariable("VELMODEL_TEST_SCALE").toDouble(&isNumber);
    return isNumber && scale > 0 ? std::max(scale, kMinScale) : 1;
}

/// A number of rounds times the scale, at least one.
inline int scaled(int rounds) {
    return static_cast<int>(
        std::min<double>(std::max(1.0, rounds * testScale()), std::numeric_limits<int>::max()));
}

/// The step of a loop over all cases: 1, or more if the scale is below 1.
inline int scaledStep() {
    return static_cast<int>(std::max(1.0, 1 / testScale()));
}

} // namespace Atelier::Vel::Testing
