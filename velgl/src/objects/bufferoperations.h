#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include "context/contextgl.h"
#include "objects/glname.h"

// Operations on buffers that leave every binding as it was, with direct state access or without.
// Requires, for each of them: `gl` is the current context.
namespace Atelier::Vel {

/// Returns: a name that is not alive when OpenGL has none to give.
GLName makeBuffer(const ContextGL& gl, const QString& label);

/// Replaces the content. Returns: whether the buffer has that size now.
bool fillBuffer(const ContextGL& gl, const GLName& buffer, const void* data, qint64 size, unsigned int usage);

/// The whole content; empty when it is larger than a byte array can be.
QByteArray readBuffer(const ContextGL& gl, const GLName& buffer);

} // namespace Atelier::Vel
