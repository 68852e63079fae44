#pragma once

#include <memory>
#include <utility>

#include <QtCore/QHash>
#include <QtCore/QPointer>
#include <QtCore/QString>

#include <velgl/gpumodel.h>
#include <velgl/texture.h>

namespace Atelier::Vel {

/// The texture that a material has on one unit, and what was found for it.
struct ModelTexture {
    bool isPresent = false; ///< whether the material has a texture
    QString path;           ///< empty for a texture object
    QPointer<Texture> object;

    QPointer<Texture> found;    ///< what the path was resolved to
    quint64 foundByManager = 0; ///< the revisions of the loaders that were asked; 0 before the first time
    quint64 foundByModel = 0;
};

/// Finds the textures of a model: those of its own loader, which live as long as the model, or else those of
/// the TextureManager. Each path is asked for once for each loader.
class ModelTextures {
public:
    /// By path; null for one that cannot be loaded.
    using Loaded = QHash<QString, std::shared_ptr<Texture>>;

    void setLoader(GPUModel::TextureLoader loader);

    /// Returns: the texture to be bound; `white` for none, one that was deleted, and one that cannot be
    /// loaded.
    Texture* find(ModelTexture& texture, Texture* white);

    /// Forgets the textures that were loaded. Requires: no material is left that uses them.
    Loaded takeLoaded() { return std::exchange(_loaded, {}); }

    /// Returns: a number that grows with each setLoader().
    quint64 revision() const { return _revision; }

private:
    Texture* load(const QString& path, Texture* white);

    GPUModel::TextureLoader _loader;
    quint64 _revision = 1; // of the loader
    Loaded _loaded;
};

} // namespace Atelier::Vel
