#include "objects/glname.h"

#include <utility>

namespace Atelier::Vel {

GLName& GLName::operator=(GLName&& other) noexcept {
    if (this != &other) {
        release();
        _node = std::move(other._node);
        _space = std::move(other._space);
    }
    return *this;
}

void GLName::release() noexcept {
    if (isAlive())
        _space->release(_node);
}

} // namespace Atelier::Vel
