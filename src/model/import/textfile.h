#pragma once

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace Atelier::Vel {

/// Opens a regular file for reading, in text mode. Anything else (a directory, a pipe, a device) is refused
/// without opening it, since opening a pipe could wait for ever.
inline bool openTextFile(QFile& file) {
    return QFileInfo(file.fileName()).isFile() && file.open(QIODevice::ReadOnly | QIODevice::Text);
}

/// Whether reading came to the end of the file. A stream takes a disk's error for that end.
inline bool isReadToTheEnd(const QFile& file) {
    return file.error() == QFileDevice::NoError;
}

} // namespace Atelier::Vel
