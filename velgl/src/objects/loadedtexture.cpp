#include "objects/loadedtexture.h"

#include <velgl/texture.h>

#include "context/glerrors.h"
#include "context/log.h"

namespace Atelier::Vel {

bool isUsableAs(Texture* texture, const QString& path) {
    if (!texture || !texture->label().isEmpty())
        return texture != nullptr;
    texture->setLabel(path);
    if (texture->name() == 0 || texture->hasContent())
        return true;
    FailureReport("Texture").failed("filled", path);
    return false;
}

void warnOfUnreadableTexture(const QString& path) {
    qCWarning(velglLog, "Texture '%s' cannot be loaded", qPrintable(path));
}

} // namespace Atelier::Vel
