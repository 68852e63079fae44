#include <velgl/bindable.h>

namespace Atelier::Vel {

Bindable::~Bindable() = default;

} // namespace Atelier::Vel
