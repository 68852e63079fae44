#pragma once

#include <QtCore/QString>
#include <QtGui/QImage>

namespace Atelier::Vel::Tool {

/// Whether the ending of the file name is an image format that can be written. True for "-".
bool canWritePicture(const QString& path);

/// Writes the picture in the format of the path's ending; "-" is standard output, as PNG. A file is written
/// completely or not at all.
/// Returns: null on success, else the cause of the failure.
QString writePicture(const QImage& picture, const QString& path);

/// "turn-007.png" for "turn.png" and frame 7 of 90. All frames have the number of digits of the last one, and
/// at least three.
QString framePath(const QString& path, int frame, int frameCount);

} // namespace Atelier::Vel::Tool
