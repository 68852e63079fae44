#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// Sets the label of a GL object, which debug messages contain. `kind` is an identifier such as GL_BUFFER.
void labelObject(unsigned int kind, unsigned int name, const QString& label);

} // namespace Atelier::Vel
