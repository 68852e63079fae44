#pragma once

#include <QtCore/QRegExp>

namespace Atelier::Vel {

/// The first character of a line that is no white space.
extern const QRegExp contentExpression;

} // namespace Atelier::Vel
