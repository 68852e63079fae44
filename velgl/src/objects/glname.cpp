#include "objects/glname.h"

#include <algorithm>

namespace Atelier::Vel {

GLName& GLName::operator=(GLName&& other) noexcept {
    if (this != &other) {
        release();
        _kind = other._kind;
        _name = std::exchange(other._name, 0U);
        _owner = std::move(other._owner);
    }
    return *this;
}

void GLName::release() {
    const std::shared_ptr<NameOwner> owner = _owner.lock();
    if (owner && _name)
        owner->release(_kind, _name);
}

const GLName* GLNames::find(const NameOwner& owner) const {
    for (const GLName& name : _names)
        if (name.livesIn(owner))
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
