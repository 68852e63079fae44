#pragma once

#include <QtCore/QByteArray>

namespace Atelier::Vel {

/// Inserts declarations into the source of a shader: behind its #version line, and behind the #extension
/// lines that follow, since GLSL allows those only before declarations. Comments, blank lines and directives
/// such as #ifdef may stand between them. Compilers count the lines of the source as before, as source string
/// 0; the declarations are source string 1.
/// Requires: `declarations` end with a line break.
/// Returns: an empty text when the source has no #version line before its code.
QByteArray withDeclarations(const QByteArray& source, const QByteArray& declarations);

} // namespace Atelier::Vel
