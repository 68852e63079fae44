#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include "context/contextgl.h"
#include "objects/glname.h"

// Operations on buffers that leave every binding as it was, with direct state access or without.
// Requires, for each of them: `gl` is the current context.
namespace Atelier::Vel {

/// Makes an empty buffer.
/// Returns: its name; a name that is not alive when OpenGL cannot make a buffer.
GLName makeBuffer(const ContextGL& gl, const QString& label);

/// Replaces the content by `size` bytes; null `data` leaves them undefined.
/// Returns: whether the buffer has that size now; the driver may have had no memory.
bool fillBuffer(const ContextGL& gl, const GLName& buffer, const void* data, qint64 size, unsigned int usage);

/// Replaces the `size` bytes from `offset` on.
/// Requires: the buffer has that many.
void writeBuffer(const ContextGL& gl, const GLName& buffer, qint64 offset, const void* data, qint64 size);

/// The maximum size of a QByteArray, whose header counts against the range of int.
constexpr qint64 kMaxReadBackSize = 0x7FFFFFC0;

/// Returns: the whole content; empty when it is larger than kMaxReadBackSize.
QByteArray readBuffer(const ContextGL& gl, const GLName& buffer);

} // namespace Atelier::Vel
