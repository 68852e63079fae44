#include <QtCore/QRegExp>
#include <QtCore/QString>

namespace Atelier::Vel {

namespace {

// Nothing reads these three, since lines are split without expressions, which change when they match: loads
// run on several threads. They keep their places among the statics. No string literals that live in this
// library: Qt keeps the patterns of compiled expressions, and compares them, after the library is unloaded.
[[maybe_unused]] const QRegExp contentExpression(QString::fromLatin1("\\S"));
[[maybe_unused]] const QRegExp spareContentExpression(QString::fromLatin1("\\S"));
[[maybe_unused]] const QRegExp whiteSpaceExpression(QString::fromLatin1("\\s+"));

} // namespace

} // namespace Atelier::Vel
