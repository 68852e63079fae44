#include <QtCore/QRegExp>
#include <QtCore/QString>

namespace Atelier::Vel {

namespace {

// Nothing reads these three. Lines are split without expressions, because a match changes an expression and
// loads run on several threads. The three keep their positions among the static objects. No string literals
// of this library: Qt keeps the patterns of compiled expressions, and compares them, after the library is
// unloaded.
[[maybe_unused]] const QRegExp contentExpression(QString::fromLatin1("\\S"));
[[maybe_unused]] const QRegExp spareContentExpression(QString::fromLatin1("\\S"));
[[maybe_unused]] const QRegExp whiteSpaceExpression(QString::fromLatin1("\\s+"));

} // namespace

} // namespace Atelier::Vel
