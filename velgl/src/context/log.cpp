#include "context/log.h"

namespace Atelier::Vel {

Q_LOGGING_CATEGORY(velglLog, "velgl")

} // namespace Atelier::Vel
