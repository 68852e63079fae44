#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// The text after the keyword of a map.
struct MapOptions {
    QString name;             ///< what is left behind the options
    float offset[2] = {0, 0}; ///< of "-o"
    float scale[2] = {1, 1};  ///< of "-s"
};

/// Reads the options in front of a map's name, such as "-s 2 2 1" or "-clamp on". An option takes at most its
/// numbers or its word, and never the last word of the text.
MapOptions parseMapOptions(const QString& text);

} // namespace Atelier::Vel
