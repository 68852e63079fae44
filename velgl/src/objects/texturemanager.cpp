#include <velgl/texturemanager.h>

#include <unordered_map>

#include <QtCore/QHash>
#include <QtCore/QSet>

#include <velgl/texture.h>

#include "context/glerrors.h"
#include "context/log.h"

namespace Atelier::Vel {

struct TextureManager::Data {
    std::unordered_map<QRgb, std::unique_ptr<Texture>> colors;
    Loader loader;
    QSet<QString> unreadable; // paths that were reported and are not tried again
    QHash<quint64, Texture*> filed;
};

namespace {

// Returns: false, after a warning, when OpenGL knows the texture but had no memory for its image.
bool isFilled(const Texture& texture) {
    if (texture.name() == 0 || texture.hasContent())
        return true;
    FailureReport("Texture").failed("filled", texture.label());
    return false;
}

} // namespace

TextureManager::TextureManager() : _data(std::make_unique<Data>()) {}

TextureManager::~TextureManager() = default;

// Never destroyed: static objects of the program may use its textures until the process ends.
TextureManager& TextureManager::Instance() {
    static auto* const manager = new TextureManager;
    return *manager;
}

Texture* TextureManager::colorTexture(const QColor& color) {
    std::unique_ptr<Texture>& texture = _data->colors[color.rgba()];
    if (!texture)
        texture = Texture::ofColor(color);
    return texture.get();
}

void TextureManager::setLoader(Loader loader) {
    _data->loader = std::move(loader);
    _data->unreadable.clear();
}

Texture* TextureManager::texture(const QString& path, Texture* fallback) {
    if (_data->unreadable.contains(path))
        return fallback;
    Texture* texture = _data->loader ? _data->loader(path) : nullptr;
    // A texture without a label is new.
    const bool isNew = texture && texture->label().isEmpty();
    if (isNew)
        texture->setLabel(path);
    if (texture && (!isNew || isFilled(*texture)))
        return texture;
    _data->unreadable.insert(path);
    if (!texture)
        qCWarning(velglLog, "Texture '%s' cannot be loaded", qPrintable(path));
    return fallback;
}

void TextureManager::setTexture(TextureToken token, Texture* texture) {
    if (texture)
        _data->filed.insert(token.value(), texture);
    else
        _data->filed.remove(token.value());
}

Texture* TextureManager::texture(TextureToken token) const {
    return _data->filed.value(token.value());
}

} // namespace Atelier::Vel
