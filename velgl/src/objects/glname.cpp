#include "objects/glname.h"

namespace Atelier::Vel {

GLName& GLName::operator=(GLName&& other) noexcept {
    if (this != &other) {
        release();
        _kind = other._kind;
        _name = std::exchange(other._name, 0U);
        _space = std::move(other._space);
    }
    return *this;
}

void GLName::release() {
    const std::shared_ptr<GLNameSpace> space = _space.lock();
    if (space && _name)
        space->release(_kind, _name);
}

} // namespace Atelier::Vel
