#include <velmodel/textureloader.h>

#include <functional>
#include <memory>
#include <utility>

#include <QtCore/QHash>
#include <QtGui/QImage>
#include <QtGui/QImageReader>

#include <velgl/autobinder.h>
#include <velgl/texture.h>
#include <velmodel/modelfiles.h>

#include "files/filesource.h"
#include "textures/imagereading.h"
#include "textures/materialtextures.h"
#include "textures/texturefilling.h"

namespace Atelier::Vel {

namespace {

// Makes a texture, which calls `read` now and again in each further group of contexts.
// Returns: null if there is no image, or no texture can be bound.
std::unique_ptr<Texture> makeTexture(const std::function<QImage()>& read, const TextureOptions& options) {
    const QImage image = read();
    if (image.isNull())
        return nullptr;
    std::unique_ptr<Texture> texture = describeTexture(image.size(), options);
    const bool canBeBound = texture->bind();
    texture->unbind();
    // The image would be written to whichever texture is bound.
    if (!canBeBound)
        return nullptr;
    const AutoBinder binder(texture.get());
    fill(*texture, image, options);
    texture->setReadOnly();
    texture->setRefill(refillFrom(read, options));
    return texture;
}

} // namespace

Texture* LoadTexture(const QString& path) {
    // The textures are never deleted, because a caller may use one until the process ends.
    static QHash<QString, Texture*> cache;
    if (Texture* known = cache.value(path))
        return known;
    const std::shared_ptr<ModelSource> files = ModelFiles().source();
    std::unique_ptr<Texture> texture =
        makeTexture([files, path] { return readImage(openImage(*files, path), *files, largestSide); }, {});
    if (texture)
        cache.insert(path, texture.get());
    return texture.release();
}

Texture* loadMaterialTexture(const QString& path) {
    Texture* const texture = LoadTexture(path);
    const QString slashed = withSlashes(path);
    return texture || slashed == path ? texture : LoadTexture(slashed);
}

GPUModel::TextureLoader makeTextureLoader(const ModelFiles& files, const TextureOptions& options) {
    return makeTextureLoader(files.source(), options);
}

GPUModel::TextureLoader makeTextureLoader(std::shared_ptr<ModelSource> source,
                                          const TextureOptions& options) {
    return [source = std::move(source), options](const QString& path) -> std::shared_ptr<Texture> {
        return makeTexture([source, path] { return readMaterialImage(*source, path, largestSide); }, options);
    };
}

QSize readTextureSize(const ModelFiles& files, const QString& path) {
    FileSource source(files);
    const std::unique_ptr<QIODevice> file = openMaterialFile(source, path);
    const QImageReader reader(file.get());
    const QSize size = mayBeRead(reader, source) ? reader.size() : QSize();
    return size.width() < 0 ? QSize() : QSize(size.width(), qAbs(size.height()));
}

} // namespace Atelier::Vel
