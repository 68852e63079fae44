#pragma once

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

/// Whether all numbers are below `limit`.
bool allBelow(const quint32* numbers, quint32 count, quint32 limit);

} // namespace Atelier::Vel
