#pragma once

#include <QtCore/QString>

namespace Atelier::Vel::Tool {

/// "GL_FLOAT" for 0x1406; the number, such as "0x1234", for a code that is not a scalar type.
QString glTypeName(unsigned int type);
/// "GL_TRIANGLES" for 4.
QString glPrimitiveName(unsigned int primitive);

} // namespace Atelier::Vel::Tool
