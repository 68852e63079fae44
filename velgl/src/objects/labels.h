#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Atelier::Vel {

/// Returns: the label as OpenGL takes it, in UTF-8 and cut to the length that every driver takes.
QByteArray encodedLabel(const QString& label);

/// Sets the label of a GL object, which debug messages contain. `kind` is an identifier such as GL_BUFFER.
void labelObject(unsigned int kind, unsigned int name, const QByteArray& label) noexcept;

} // namespace Atelier::Vel
