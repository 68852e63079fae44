#pragma once

#include <QtCore/QtGlobal>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

/// A process-unique key under which a program can hand a texture to the TextureManager.
class VELGL_EXPORT TextureToken {
public:
    TextureToken();

    quint64 value() const { return _value; }
    friend bool operator==(TextureToken a, TextureToken b) { return a._value == b._value; }
    friend bool operator!=(TextureToken a, TextureToken b) { return a._value != b._value; }

private:
    quint64 _value;
};

} // namespace Atelier::Vel
