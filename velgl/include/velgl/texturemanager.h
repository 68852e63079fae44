#pragma once

#include <memory>

#include <functional>

#include <QtCore/QString>
#include <QtGui/QColor>

#include <velgl/texturetoken.h>
#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class Texture;

/// Hands out shared textures: of one solid colour, by path through the program's loader, and by token.
class VELGL_EXPORT TextureManager {
public:
    using Loader = std::function<Texture*(const QString& path)>;

    static TextureManager& Instance();

    TextureManager(const TextureManager&) = delete;
    TextureManager& operator=(const TextureManager&) = delete;

    /// The one texture of that colour; made without touching the GL, filled on first bind. Owned by the
    /// manager.
    Texture* colorTexture(const QColor& color);

    /// The function that turns a path into a texture, or into null when the file is no image. Textures stay
    /// its own.
    void setLoader(Loader loader);
    /// The texture of that path. A path that does not load is reported once, as a warning, and gives
    /// `fallback`.
    Texture* texture(const QString& path, Texture* fallback);

    /// Files a texture under a token; null removes it. Not owned.
    void setTexture(TextureToken token, Texture* texture);
    Texture* texture(TextureToken token) const;

private:
    TextureManager();
    ~TextureManager();

    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel
