#pragma once

#include <memory>

#include <functional>

#include <QtCore/QString>
#include <QtGui/QColor>

#include <velgl/texturetoken.h>
#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class Texture;

/// Gives access to shared textures: of one solid colour, by path through the program's loader, and by token.
/// Threads: all functions may be called on any thread, several at a time, except for the texture by path,
/// which is asked for on the thread of a current context. The textures are used on that thread, see Texture.
class VELGL_EXPORT TextureManager {
public:
    /// Makes a texture from the file at `path`, or returns the one that it has made before.
    /// Returns: a texture that the loader owns and keeps; null when the file holds no image.
    using Loader = std::function<Texture*(const QString& path)>;

    /// Returns: the manager of the process. It is made by the first call and never destroyed, so static
    /// objects may use its textures until the process ends.
    static TextureManager& Instance();

    TextureManager(const TextureManager&) = delete;
    TextureManager& operator=(const TextureManager&) = delete;

    /// Returns: the texture of one texel of that colour, see Texture::ofColor(); the same object for the same
    /// four 8-bit channels. The manager owns it. Needs no context.
    Texture* colorTexture(const QColor& color);

    /// Sets the function that loads textures; an empty function for none. Paths that could not be loaded
    /// before are tried again.
    void setLoader(Loader loader);
    /// The same for a library that brings a loader: changes nothing after the program has called setLoader(),
    /// with an empty function included.
    void setDefaultLoader(Loader loader);
    /// Asks the loader for the texture of `path`. A texture without a label is labelled with the path.
    /// Requires: what the loader requires, as a rule a current context.
    /// Returns: the loader's texture. `fallback`, which may be null, when there is no loader, when it returns
    /// null, and when OpenGL had no memory for the image of a new texture. A warning says which, once for
    /// each path; the path is not tried again before the next setLoader(). Cost: one call of the loader,
    /// which is expected to keep its textures by path.
    Texture* texture(const QString& path, Texture* fallback);

    /// Files `texture` under `token` in place of an earlier one; null removes that one. The texture is not
    /// owned.
    void setTexture(TextureToken token, Texture* texture);
    /// Returns: the texture filed under `token`; null when there is none, or it was deleted.
    Texture* texture(TextureToken token) const;

private:
    friend struct TextureManagerAccess;

    TextureManager();
    ~TextureManager();

    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel
