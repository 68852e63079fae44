#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QString>

#include "claim.h"

namespace Atelier::Vel::Fuzzing {

/// Makes the file, in place of one that is there.
inline void writeFile(const QString& path, const QByteArray& bytes) {
    // Anew: some file systems flush a file that was emptied and written again to the disk at once.
    QFile::remove(path);
    QFile file(path);
    require(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(bytes) == bytes.size(),
            "a file can be written");
}

} // namespace Atelier::Vel::Fuzzing
