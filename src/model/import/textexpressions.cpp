#include "import/textexpressions.h"

namespace Atelier::Vel {

// Made once, in this order: compiling an expression costs more than reading a small file.
// No string literals that live in this library: Qt keeps the patterns of compiled expressions, and compares
// them, after the library is unloaded.
const QRegExp contentExpression(QString::fromLatin1("\\S"));

namespace {

// Nothing reads these two, since OBJ lines are split as bytes; they keep their places among the statics.
[[maybe_unused]] const QRegExp spareContentExpression(QString::fromLatin1("\\S"));
[[maybe_unused]] const QRegExp whiteSpaceExpression(QString::fromLatin1("\\s+"));

} // namespace

} // namespace Atelier::Vel
