#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// An assertion of the builder that logs, critically, and goes on. `line` is its number in the log.
void reportAssertion(const QString& condition, const QString& detail, int line);

/// Warns that an allocator gave no stream of the size needed for `purpose`.
void reportMissingStream(const QString& purpose);

/// Warns that the context made no object for `purpose`.
void reportMissingObject(const QString& purpose);

/// Warns that a stream would have grown beyond what it can hold, and so refused what was added to it.
void reportRefusedData(const QString& purpose);

/// Warns that a polygon of `corners` corners gave no triangles.
void reportUntriangulated(quint64 corners);

/// Warns that a file which a model names is not read, because it lies outside of the folder that holds it.
void reportOutsideFile(const QString& path, const QString& folder);

} // namespace Atelier::Vel
