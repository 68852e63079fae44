#pragma once

#include <QtCore/QtGlobal>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

/// A key under which a program files a texture with the TextureManager. Each token that is constructed
/// differs from all others of the process; copies of a token are equal to it.
/// Threads: tokens may be constructed on any thread, several at a time.
class VELGL_EXPORT TextureToken {
public:
    /// Takes the next number of the process.
    TextureToken();

    /// Returns: the number, 1 or more. It depends on the order in which tokens are constructed, so do not
    /// store it beyond the end of the process.
    quint64 value() const { return _value; }

    friend bool operator==(TextureToken a, TextureToken b) { return a._value == b._value; }
    friend bool operator!=(TextureToken a, TextureToken b) { return a._value != b._value; }

private:
    quint64 _value;
};

} // namespace Atelier::Vel
