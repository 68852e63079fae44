#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// Gives a GL object the name under which debug messages speak of it. `kind` is GL_BUFFER and its like.
void labelObject(unsigned int kind, unsigned int name, const QString& label);

} // namespace Atelier::Vel
