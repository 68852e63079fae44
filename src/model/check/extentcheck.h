#pragma once

#include <vector>

#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include "check/findinglog.h"

namespace Atelier::Vel {

/// Examines the box around the positions that are used: its size, and its distance from the origin.
/// `positions` has three floats for each entry of `used`.
void examineExtent(const QString& file, const float* positions, const std::vector<quint8>& used,
                   FindingLog& log);

} // namespace Atelier::Vel
