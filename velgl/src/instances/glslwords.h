#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// Returns: whether GLSL 4.60 or an earlier version from 4.30 on uses the word as a keyword, or reserves it.
bool isGlslWord(const QString& word);

} // namespace Atelier::Vel
