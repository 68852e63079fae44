#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QString>

#include "claim.h"

namespace Atelier::Vel::Fuzzing {

/// Writes a new file, and replaces an existing one.
inline void writeFile(const QString& path, const QByteArray& bytes) {
    // Removed first: some file systems immediately flush a file that is truncated and written again.
    QFile::remove(path);
    QFile file(path);
    require(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(bytes) == bytes.size(),
            "a file can be written");
}

} // namespace Atelier::Vel::Fuzzing
