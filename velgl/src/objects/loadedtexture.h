#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

class Texture;

/// Receives what a loader returned for `path`, which may be null. A new texture, one without a label, is
/// labelled with the path.
/// Returns: false for null, and, after a warning, for a new texture for whose image OpenGL had no memory.
bool isUsableAs(Texture* texture, const QString& path);

/// Warns that the loader has no texture for the path.
void warnOfUnreadableTexture(const QString& path);

} // namespace Atelier::Vel
