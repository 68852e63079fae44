#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// An assertion of the builder that logs, critically, and goes on. `line` is its number in the log.
void reportAssertion(const QString& condition, const QString& detail, int line);

/// Warns that an allocator gave no stream of the size needed for `purpose`.
void reportMissingStream(const QString& purpose);

/// Warns that a stream would have grown beyond what it can hold, and so refused what was added to it.
void reportRefusedData(const QString& purpose);

} // namespace Atelier::Vel
