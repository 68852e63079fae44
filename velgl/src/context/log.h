#pragma once

#include <QtCore/QLoggingCategory>

namespace Atelier::Vel {

Q_DECLARE_LOGGING_CATEGORY(velglLog)

} // namespace Atelier::Vel
