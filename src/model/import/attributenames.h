#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

// The vertex attributes of a model that is loaded.

inline QString positionAttribute() {
    return QStringLiteral("va_Vertex");
}

inline QString normalAttribute() {
    return QStringLiteral("va_Normal");
}

inline QString texCoordAttribute() {
    return QStringLiteral("va_TexCoord");
}

inline QString colourAttribute() {
    return QStringLiteral("va_Color");
}

} // namespace Atelier::Vel
