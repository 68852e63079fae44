#pragma once

#include <QtCore/QFile>

namespace Atelier::Vel {

/// Whether reading reached the end of the file. A text stream treats a read error of the disk as the end.
inline bool isReadToTheEnd(const QFile& file) {
    return file.error() == QFileDevice::NoError;
}

} // namespace Atelier::Vel
