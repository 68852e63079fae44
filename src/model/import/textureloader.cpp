#include <velmodel/textureloader.h>

#include <memory>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QtEndian>
#include <QtGui/QImage>
#include <QtGui/QImageReader>

#include <velgl/autobinder.h>
#include <velgl/glentrypoints.h>
#include <velgl/texture.h>

namespace Atelier::Vel {

namespace {

constexpr unsigned int kTexture2D = 0x0DE1;       // GL_TEXTURE_2D
constexpr int kRgba = 0x1908;                     // GL_RGBA
constexpr unsigned int kBgra = 0x80E1;            // GL_BGRA
constexpr unsigned int kUnsignedByte = 0x1401;    // GL_UNSIGNED_BYTE
constexpr unsigned int kUnpackAlignment = 0x0CF5; // GL_UNPACK_ALIGNMENT
constexpr unsigned int kMinFilter = 0x2801;       // GL_TEXTURE_MIN_FILTER
constexpr int kLinearMipmapLinear = 0x2703;       // GL_LINEAR_MIPMAP_LINEAR
constexpr unsigned int kMagFilter = 0x2800;       // GL_TEXTURE_MAG_FILTER
constexpr int kLinear = 0x2601;                   // GL_LINEAR
constexpr unsigned int kWrapS = 0x2802;           // GL_TEXTURE_WRAP_S
constexpr unsigned int kWrapT = 0x2803;           // GL_TEXTURE_WRAP_T
constexpr int kRepeat = 0x2901;                   // GL_REPEAT
constexpr unsigned int kBaseLevel = 0x813C;       // GL_TEXTURE_BASE_LEVEL
constexpr unsigned int kMaxLevel = 0x813D;        // GL_TEXTURE_MAX_LEVEL

constexpr unsigned int kMaxTextureSize = 0x0D33; // GL_MAX_TEXTURE_SIZE

// Sampling uses five levels, whatever the size of the image.
constexpr int kLastLevel = 4;

// A picture that takes more memory than this, four bytes to a pixel, is not decoded.
constexpr qint64 kLargestImageBytes = qint64(1) << 30;

int largestSide() {
    int side = 0;
    glEntryPoints().getIntegerv(kMaxTextureSize, &side);
    return side;
}

// A bitmap whose rows run from the top down tells a negative height; what tells no size at all fits.
bool fits(const QSize& size) {
    const qint64 width = qAbs(qint64(size.width()));
    const qint64 height = qAbs(qint64(size.height()));
    const int side = largestSide();
    return width <= side && height <= side && width * height * 4 <= kLargestImageBytes;
}

// The screen that a GIF is meant for: it is decoded to that size, but tells the one of its first picture.
// Invalid for other files.
QSize gifScreen(const QString& path) {
    QFile file(path);
    const QByteArray header = file.open(QIODevice::ReadOnly) ? file.read(10) : QByteArray();
    if (header.size() < 10 || !header.startsWith("GIF8"))
        return {};
    return {qFromLittleEndian<quint16>(header.constData() + 6),
            qFromLittleEndian<quint16>(header.constData() + 8)};
}

// Whether the pixels lie in memory as blue, green, red, alpha, eight bits each.
bool isBgra(QImage::Format format) {
    return format == QImage::Format_RGB32 || format == QImage::Format_ARGB32 ||
           format == QImage::Format_ARGB32_Premultiplied;
}

// Null where the file is no readable image. Rows run from the bottom up, as OpenGL takes them.
QImage readImage(const QString& path) {
    if (!QFileInfo(path).isFile())
        return {};
    QImageReader reader(path);
    // Not every format tells its size beforehand.
    if (!fits(reader.size()) || !fits(gifScreen(path)))
        return {};
    QImage image = reader.read();
    if (image.isNull() || !fits(image.size()))
        return {};
    if (!isBgra(image.format()))
        image = image.convertToFormat(QImage::Format_ARGB32);
    return image.mirrored(false, true);
}

void fill(Texture& texture, const QImage& image) {
    const GLEntryPoints& gl = glEntryPoints();
    // The alignment stays at 1 afterwards: meant.
    gl.pixelStorei(kUnpackAlignment, 1);
    gl.texParameteri(kTexture2D, kMinFilter, kLinearMipmapLinear);
    gl.texParameteri(kTexture2D, kMagFilter, kLinear);
    gl.texParameteri(kTexture2D, kWrapS, kRepeat);
    gl.texParameteri(kTexture2D, kWrapT, kRepeat);
    gl.texParameteri(kTexture2D, kBaseLevel, 0);
    gl.texParameteri(kTexture2D, kMaxLevel, kLastLevel);
    gl.texImage2D(kTexture2D, 0, kRgba, image.width(), image.height(), 0, kBgra, kUnsignedByte,
                  image.constBits());
    gl.generateMipmap(texture.target());
}

} // namespace

Texture* LoadTexture(const QString& path) {
    // Its textures are never deleted: who asked for one may hold it until the process ends.
    static QHash<QString, Texture*> cache;
    if (Texture* known = cache.value(path))
        return known;
    const QImage image = readImage(path);
    if (image.isNull())
        return nullptr;
    auto texture = std::make_unique<Texture>(kTexture2D, kRgba, image.width(), image.height(), 0, nullptr);
    const AutoBinder binder(texture.get());
    fill(*texture, image);
    cache.insert(path, texture.get());
    texture->setReadOnly();
    return texture.release();
}

} // namespace Atelier::Vel
