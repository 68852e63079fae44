// Runs LoadTexture on the bytes of an image, without OpenGL: replacements of the driver's functions read all
// pixels and report a small size limit. The limit that scripts/fuzz sets for one allocation is slightly more
// than an image of that size.
#include <cstddef>
#include <cstdint>
#include <numeric>

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <velgl/glentrypoints.h>
#include <velgl/texture.h>
#include <velmodel/textureloader.h>

#include "claim.h"
#include "filewriting.h"

using namespace Atelier::Vel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr unsigned int kMaxTextureSize = 0x0D33; // GL_MAX_TEXTURE_SIZE
constexpr int kMaxSide = 512;

// Qt decodes an X bitmap, of up to 128 MiB, to detect the format. No limit applies before that.
const char* const kBitmapKeyword = "#define";

int uploads = 0;

void takeImage(unsigned int /*target*/, int /*level*/, int /*internalFormat*/, int width, int height,
               int /*border*/, unsigned int /*format*/, unsigned int /*type*/, const void* pixels) {
    Fuzzing::require(width > 0 && width <= kMaxSide && height > 0 && height <= kMaxSide,
                     "an image is no larger than the driver takes");
    const auto* const bytes = static_cast<const std::uint8_t*>(pixels);
    volatile unsigned int sum = std::accumulate(bytes, bytes + qint64(4) * width * height, 0U);
    static_cast<void>(sum);
    ++uploads;
}

void standInForDriver() {
    GLEntryPoints& gl = glEntryPoints();
    gl.pixelStorei = [](unsigned int /*name*/, int /*value*/) {};
    gl.texParameteri = [](unsigned int /*target*/, unsigned int /*name*/, int /*value*/) {};
    gl.generateMipmap = [](unsigned int /*target*/) {};
    gl.getIntegerv = [](unsigned int name, int* value) { *value = name == kMaxTextureSize ? kMaxSide : 0; };
    gl.texImage2D = takeImage;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray image =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<int>(size));
    if (image.contains(kBitmapKeyword))
        return 0;
    static const QTemporaryDir folder;
    static const bool isReady = (standInForDriver(), folder.isValid());
    Fuzzing::require(isReady, "there is a folder for the image");
    // The loader caches textures by name, so each input needs a new name.
    static int loaded = 0;
    const QString path = folder.filePath(QStringLiteral("image%1").arg(loaded));
    Fuzzing::writeFile(path, image);

    const int uploadsBefore = uploads;
    const Texture* const texture = LoadTexture(path);
    Fuzzing::require((texture != nullptr) == (uploads == uploadsBefore + 1),
                     "a texture has been filled once");
    if (texture == nullptr)
        return 0;
    Fuzzing::require(QFile::remove(path) && LoadTexture(path) == texture, "a texture is loaded once");
    ++loaded;
    return 0;
}
