#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// The text after the keyword of a map, without the options in front, such as "-s 2 2 1" or "-clamp on". An
/// option takes at most its numbers or its word, and never the last word of the text.
QString withoutMapOptions(const QString& text);

} // namespace Atelier::Vel
