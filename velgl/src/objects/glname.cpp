#include "objects/glname.h"

#include <algorithm>

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

const GLName* GLNames::find(const GLNameSpace& space) const {
    for (const GLName& name : _names)
        if (name.livesIn(space))
            return &name;
    return nullptr;
}

const GLName& GLNames::add(GLName name) {
    const auto isGone = [](const GLName& known) { return !known.isAlive(); };
    _names.erase(std::remove_if(_names.begin(), _names.end(), isGone), _names.end());
    return _names.emplace_back(std::move(name));
}

bool GLNames::isAlive() const {
    return std::any_of(_names.cbegin(), _names.cend(), [](const GLName& name) { return name.isAlive(); });
}

} // namespace Atelier::Vel
