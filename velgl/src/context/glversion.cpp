#include <epoxy/gl.h>

#include "context/glversion.h"

namespace Atelier::Vel {

int currentVersion() {
    return epoxy_is_desktop_gl() ? epoxy_gl_version() : 0;
}

} // namespace Atelier::Vel
