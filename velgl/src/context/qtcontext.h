#pragma once

#include "context/nativecontext.h"

class QOpenGLContext;

namespace Atelier::Vel {

/// Returns: the current context of Qt on this thread, if it is the one with the native context `native`; else
/// null. Other code may have made another native context current since.
const QOpenGLContext* qtContextOf(const NativeContext& native);

} // namespace Atelier::Vel
