#pragma once

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace Atelier::Vel {

/// Opens a regular file for reading, in text mode. Anything else (a directory, a pipe, a device) is refused
/// without opening it, since opening a pipe could wait for ever.
inline bool openTextFile(QFile& file) {
    return QFileInfo(file.fileName()).isFile() && file.open(QIODevice::ReadOnly | QIODevice::Text);
}

} // namespace Atelier::Vel
