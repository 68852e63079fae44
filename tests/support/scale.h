#pragma once

#include <algorithm>

#include <QtCore/QtGlobal>

namespace Atelier::Vel::Testing {

/// A number of rounds, times VELMODEL_TEST_SCALE for long runs.
inline int scaled(int rounds) {
    return rounds * std::max(1, qEnvironmentVariableIntValue("VELMODEL_TEST_SCALE"));
}

} // namespace Atelier::Vel::Testing
