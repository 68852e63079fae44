#pragma once

#include <QtCore/QFile>

namespace Atelier::Vel {

/// Whether reading came to the end of the file. A stream takes a disk's error for that end.
inline bool isReadToTheEnd(const QFile& file) {
    return file.error() == QFileDevice::NoError;
}

} // namespace Atelier::Vel
