#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QString>

#include "claim.h"

namespace Atelier::Vel::Fuzzing {

/// Makes the file, or replaces what it holds.
inline void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    require(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(bytes) == bytes.size(),
            "a file can be written");
}

} // namespace Atelier::Vel::Fuzzing
