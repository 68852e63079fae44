#include "objects/glname.h"

#include "context/currentcontext.h"

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

const GLName* GLNames::find(const GLNameSpace& space) {
    const Entry* entry = _table.find(space);
    return entry ? &entry->name : nullptr;
}

unsigned int GLNames::inCurrentContext() {
    const ContextGL* gl = enterCurrentContext();
    const GLName* name = gl ? find(*gl->group()) : nullptr;
    return name ? name->value() : 0;
}

} // namespace Atelier::Vel
