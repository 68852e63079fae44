#include "drawing/modeltextures.h"

#include "context/currentcontext.h"
#include "objects/loadedtexture.h"
#include "objects/texturemanageraccess.h"
#include "state/pixelstore.h"

namespace Atelier::Vel {

void ModelTextures::setLoader(GPUModel::TextureLoader loader) {
    _loader = std::move(loader);
    _loaded.clear();
    ++_revision;
}

Texture* ModelTextures::find(ModelTexture& texture, Texture* white) {
    if (texture.path.isEmpty())
        return texture.object ? texture.object.data() : white;
    const quint64 managerRevision = TextureManagerAccess::loaderRevision(TextureManager::Instance());
    const bool isAsked =
        texture.foundByModel == _revision && (_loader || texture.foundByManager == managerRevision);
    if (isAsked && texture.found)
        return texture.found;
    texture.found = load(texture.path, white);
    texture.foundByManager = managerRevision;
    texture.foundByModel = _revision;
    return texture.found;
}

Texture* ModelTextures::load(const QString& path, Texture* white) {
    // A loader may change the unpack settings, and make another context current for a while.
    const ScopedPixelStore store(ScopedPixelStore::Direction::Unpack);
    const ContextScope::Pause pause;
    if (!_loader)
        return TextureManager::Instance().texture(path, white);
    const auto known = _loaded.constFind(path);
    if (known != _loaded.constEnd())
        return *known ? known->get() : white;
    const GPUModel::TextureLoader loader = _loader; // it may be replaced while it runs
    std::shared_ptr<Texture> loaded = loader(path);
    if (!loaded)
        warnOfUnreadableTexture(path);
    else if (!isUsableAs(loaded.get(), path))
        loaded.reset();
    _loaded.insert(path, loaded);
    return loaded ? loaded.get() : white;
}

} // namespace Atelier::Vel
