#include "state/primitiverestart.h"

namespace Atelier::Vel {

namespace {

// Returns: whether the capability was enabled.
bool turnOff(GLenum capability) {
    const bool isEnabled = glIsEnabled(capability) == GL_TRUE;
    if (isEnabled)
        glDisable(capability);
    return isEnabled;
}

} // namespace

bool isPrimitiveList(GLenum mode) {
    switch (mode) {
    case GL_POINTS:
    case GL_LINES:
    case GL_LINES_ADJACENCY:
    case GL_TRIANGLES:
    case GL_TRIANGLES_ADJACENCY:
    case GL_QUADS:
    case GL_PATCHES:
        return true;
    default:
        return false;
    }
}

ScopedPrimitiveRestart::ScopedPrimitiveRestart(GLenum mode) {
    if (!isPrimitiveList(mode))
        return;
    _atIndex = turnOff(GL_PRIMITIVE_RESTART);
    _atFixedIndex = turnOff(GL_PRIMITIVE_RESTART_FIXED_INDEX);
}

ScopedPrimitiveRestart::~ScopedPrimitiveRestart() {
    if (_atIndex)
        glEnable(GL_PRIMITIVE_RESTART);
    if (_atFixedIndex)
        glEnable(GL_PRIMITIVE_RESTART_FIXED_INDEX);
}

} // namespace Atelier::Vel
