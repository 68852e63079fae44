#include <velmodel/decodedtextures.h>

#include <algorithm>
#include <deque>
#include <utility>

#include <QtCore/QHash>

#include <velgl/autobinder.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/texture.h>

#include "textures/imagereading.h"
#include "textures/texturefilling.h"

namespace Atelier::Vel {

namespace {

// The limit of the driver is not known on the thread that decodes. No present driver has a larger one.
constexpr int kLargestDecodedSide = 32'768;

// One file: its image until that is handed over, and its texture. A file that cannot be decoded has neither.
struct DecodedTexture {
    std::shared_ptr<QImage> image = std::make_shared<QImage>(); // shared with the refill function
    std::shared_ptr<Texture> texture;                           // made when it is first needed
};

} // namespace

struct DecodedTextures::Data {
    std::shared_ptr<ModelSource> source;
    TextureOptions options;
    GPUModel::TextureLoader loadOther;
    QHash<QString, std::shared_ptr<DecodedTexture>> byPath;
    std::deque<QString> waiting; // in the order of decode(); all have an image
    qint64 waitingBytes = 0;

    void decode(const QString& path);
    std::shared_ptr<Texture> load(const QString& path) const;
    void describe(DecodedTexture& decoded) const;
    Texture::Refill refillOf(const QString& path, const DecodedTexture& decoded) const;
    void handOverNext();
    void handOver(const HandOverBudget& budget);
};

void DecodedTextures::Data::decode(const QString& path) {
    const auto decoded = std::make_shared<DecodedTexture>();
    *decoded->image = readMaterialImage(*source, path, [] { return kLargestDecodedSide; });
    byPath.insert(path, decoded);
    if (decoded->image->isNull())
        return;
    waiting.push_back(path);
    waitingBytes += decoded->image->sizeInBytes();
}

std::shared_ptr<Texture> DecodedTextures::Data::load(const QString& path) const {
    const std::shared_ptr<DecodedTexture> decoded = byPath.value(path);
    if (!decoded)
        return loadOther(path);
    describe(*decoded);
    return decoded->texture;
}

// Makes the texture, unless the driver cannot take the image. A read-only texture has no content, and is
// drawn white, until it has a refill function.
void DecodedTextures::Data::describe(DecodedTexture& decoded) const {
    const QSize size = decoded.image->size();
    if (decoded.texture || size.isEmpty() || std::max(size.width(), size.height()) > largestSide())
        return;
    decoded.texture = describeTexture(size, options);
    decoded.texture->setReadOnly();
}

// Fills the texture with the image that was decoded, and with that of the file after the hand-over.
Texture::Refill DecodedTextures::Data::refillOf(const QString& path, const DecodedTexture& decoded) const {
    const auto read = [source = source, path, image = decoded.image] {
        return image->isNull() ? readMaterialImage(*source, path, largestSide) : *image;
    };
    return refillFrom(read, options);
}

void DecodedTextures::Data::handOverNext() {
    const QString path = waiting.front();
    waiting.pop_front();
    DecodedTexture& decoded = *byPath[path];
    waitingBytes -= decoded.image->sizeInBytes();
    describe(decoded);
    if (decoded.texture) {
        decoded.texture->setRefill(refillOf(path, decoded));
        const AutoBinder binder(decoded.texture.get()); // fills it
    }
    *decoded.image = {};
}

void DecodedTextures::Data::handOver(const HandOverBudget& budget) {
    qint64 bytes = 0;
    for (int images = 0; !waiting.empty(); ++images) {
        bytes += byPath[waiting.front()]->image->sizeInBytes();
        if (images > 0 && (images >= budget.images || bytes > budget.bytes))
            return;
        handOverNext();
    }
}

DecodedTextures::DecodedTextures(const ModelFiles& files, const TextureOptions& options)
    : DecodedTextures(files.source(), options) {}

DecodedTextures::DecodedTextures(std::shared_ptr<ModelSource> source, const TextureOptions& options)
    : _data(std::make_shared<Data>()) {
    _data->source = std::move(source);
    _data->options = options;
    _data->loadOther = makeTextureLoader(_data->source, options);
}

bool DecodedTextures::decode(const QStringList& paths, const DecodeProgress& progress) {
    QStringList left;
    for (const QString& path : paths)
        if (!_data->byPath.contains(path))
            left.append(path);
    left.removeDuplicates();
    const auto goesOn = [&](int done) {
        return !progress || progress({done, left.size(), _data->waitingBytes});
    };
    for (int done = 0; done < left.size(); ++done) {
        if (!goesOn(done))
            return false;
        _data->decode(left[done]);
    }
    return left.isEmpty() || goesOn(left.size());
}

GPUModel::TextureLoader DecodedTextures::loader() const {
    return [data = _data](const QString& path) { return data->load(path); };
}

int DecodedTextures::handOver(const HandOverBudget& budget) {
    if (OpenGLDeviceContext::current())
        _data->handOver(budget);
    return waitingCount();
}

int DecodedTextures::waitingCount() const {
    return static_cast<int>(_data->waiting.size());
}

} // namespace Atelier::Vel
