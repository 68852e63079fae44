#include "import/textexpressions.h"

namespace Atelier::Vel {

// Made once, in this order: compiling an expression costs more than reading a small file.
const QRegExp contentExpression(QStringLiteral("\\S"));

namespace {

// Nothing reads these two, since OBJ lines are split as bytes; they keep their places among the statics.
[[maybe_unused]] const QRegExp spareContentExpression(QStringLiteral("\\S"));
[[maybe_unused]] const QRegExp whiteSpaceExpression(QStringLiteral("\\s+"));

} // namespace

} // namespace Atelier::Vel
