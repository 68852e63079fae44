#include "objects/glnames.h"

#include "context/currentcontext.h"

namespace Atelier::Vel {

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
