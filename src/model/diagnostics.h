#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// Reports a failed assertion of the builder as a critical message. Execution continues. `line` is the line
/// number in the log.
void reportAssertion(const QString& condition, const QString& detail, int line);

/// Warns that an allocator returned no stream of the size needed for `purpose`.
void reportMissingStream(const QString& purpose);

/// Warns that the GL context made no object for `purpose`.
void reportMissingObject(const QString& purpose);

/// Warns that a stream refused data because they exceed its maximum size.
void reportRefusedData(const QString& purpose);

/// Warns that a polygon of `corners` corners gave no triangles.
void reportUntriangulated(quint64 corners);

/// Warns that a file named by a model is not read, because it is outside of the model's folder.
void reportOutsideFile(const QString& path, const QString& folder);

} // namespace Atelier::Vel
