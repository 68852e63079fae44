#pragma once

#include <QtCore/QString>

namespace Atelier::Vel::Tool {

/// "GL_FLOAT" for 0x1406; a code that is no scalar type gives its number, such as "0x1234".
QString glTypeName(unsigned int type);
/// "GL_TRIANGLES" for 4.
QString glPrimitiveName(unsigned int primitive);

} // namespace Atelier::Vel::Tool
