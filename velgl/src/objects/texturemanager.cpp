#include <velgl/texturemanager.h>

#include <atomic>
#include <mutex>
#include <unordered_map>

#include <QtCore/QHash>
#include <QtCore/QPointer>
#include <QtCore/QSet>

#include <velgl/texture.h>

#include "context/log.h"
#include "objects/loadedtexture.h"
#include "objects/texturemanageraccess.h"

namespace Atelier::Vel {

struct TextureManager::Data {
    std::mutex mutex; // for all members but `revision`; never held while a loader runs
    std::unordered_map<QRgb, std::unique_ptr<Texture>> colors;
    std::shared_ptr<const Loader> loader;
    bool isClientsLoader = false;
    std::atomic<quint64> revision{1}; // of the loader
    QSet<QString> unreadable;         // paths that were reported and are not tried again
    QHash<quint64, QPointer<Texture>> filed;

    // Requires: `mutex` is locked.
    void setLoader(Loader function) {
        loader = function ? std::make_shared<const Loader>(std::move(function)) : nullptr;
        unreadable.clear();
        ++revision;
    }
};

TextureManager::TextureManager() : _data(std::make_unique<Data>()) {}

TextureManager::~TextureManager() = default;

// Never destroyed: static objects of the program may use its textures until the process ends.
TextureManager& TextureManager::Instance() {
    static auto* const manager = new TextureManager;
    return *manager;
}

Texture* TextureManager::colorTexture(const QColor& color) {
    const std::lock_guard lock(_data->mutex);
    std::unique_ptr<Texture>& texture = _data->colors[color.rgba()];
    if (!texture)
        texture = Texture::ofColor(color);
    return texture.get();
}

void TextureManager::setLoader(Loader loader) {
    const std::lock_guard lock(_data->mutex);
    _data->isClientsLoader = true;
    _data->setLoader(std::move(loader));
}

void TextureManager::setDefaultLoader(Loader loader) {
    const std::lock_guard lock(_data->mutex);
    if (!_data->isClientsLoader && !_data->loader)
        _data->setLoader(std::move(loader));
}

Texture* TextureManager::texture(const QString& path, Texture* fallback) {
    std::shared_ptr<const Loader> loader;
    {
        const std::lock_guard lock(_data->mutex);
        if (_data->unreadable.contains(path))
            return fallback;
        loader = _data->loader;
    }
    Texture* texture = loader ? (*loader)(path) : nullptr;
    if (isUsableAs(texture, path))
        return texture;
    {
        const std::lock_guard lock(_data->mutex);
        _data->unreadable.insert(path);
    }
    if (!loader)
        qCWarning(velglLog, "Texture '%s' is not loaded: no texture loader is set", qPrintable(path));
    else if (!texture)
        warnOfUnreadableTexture(path);
    return fallback;
}

void TextureManager::setTexture(TextureToken token, Texture* texture) {
    const std::lock_guard lock(_data->mutex);
    if (texture)
        _data->filed.insert(token.value(), texture);
    else
        _data->filed.remove(token.value());
}

Texture* TextureManager::texture(TextureToken token) const {
    const std::lock_guard lock(_data->mutex);
    return _data->filed.value(token.value());
}

quint64 TextureManagerAccess::loaderRevision(const TextureManager& manager) {
    return manager._data->revision;
}

} // namespace Atelier::Vel
