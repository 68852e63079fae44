#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// Why the file `path` of the system cannot be read: the end of a sentence, such as "no such file".
QString causeOfUnreadable(const QString& path);

} // namespace Atelier::Vel
