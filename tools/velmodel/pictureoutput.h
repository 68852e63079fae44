#pragma once

#include <QtCore/QString>
#include <QtGui/QImage>

namespace Atelier::Vel::Tool {

/// Whether the file name's ending names an image format that can be written; "-" can.
bool canWritePicture(const QString& path);

/// Writes the picture whole or not at all, in the format of the path's ending; "-" is standard output, as
/// PNG. Returns: null on success, else why the picture could not be written.
QString writePicture(const QImage& picture, const QString& path);

/// "turn-007.png" for "turn.png" and frame 7 of 90: as many digits as the last frame has, three at least.
QString framePath(const QString& path, int frame, int frameCount);

} // namespace Atelier::Vel::Tool
