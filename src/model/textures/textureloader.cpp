#include <velmodel/textureloader.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>

#include <QtCore/QFile>
#include <QtCore/QHash>
#include <QtCore/QPair>
#include <QtCore/QtEndian>
#include <QtGui/QImage>
#include <QtGui/QImageReader>

#include <velgl/autobinder.h>
#include <velgl/glentrypoints.h>
#include <velgl/texture.h>
#include <velmodel/modelfiles.h>

#include "glconstants.h"
#include "textures/materialtextures.h"

namespace Atelier::Vel {

namespace {

// Sampling uses five levels, whatever the size of the image.
constexpr int kLastLevel = 4;

// An image that needs more memory than this, at four bytes per pixel, is not decoded.
constexpr qint64 kLargestImageBytes = qint64(1) << 30;

int largestSide() {
    int side = 0;
    glEntryPoints().getIntegerv(kGlMaxTextureSize, &side);
    return side;
}

// A bitmap whose rows run from top to bottom reports a negative height. An image without a known size fits.
bool fits(const QSize& size) {
    const qint64 width = qAbs(qint64(size.width()));
    const qint64 height = qAbs(qint64(size.height()));
    const int side = largestSide();
    return width <= side && height <= side && width * height * 4 <= kLargestImageBytes;
}

// The screen size of a GIF. A GIF is decoded to that size, but its reader reports the size of the first
// picture. Invalid for other files.
QSize gifScreen(QFile& file) {
    const QByteArray header = file.peek(10);
    if (header.size() < 10 || !header.startsWith("GIF8"))
        return {};
    return {qFromLittleEndian<quint16>(header.constData() + 6),
            qFromLittleEndian<quint16>(header.constData() + 8)};
}

// The header and the first entry of an icon or a cursor; empty for other files.
QByteArray iconDirectory(QFile& file) {
    constexpr int kDirectoryBytes = 22;
    const QByteArray directory = file.peek(kDirectoryBytes);
    const bool isIcon = directory.startsWith(QByteArray("\0\0\1\0", 4));
    const bool isCursor = directory.startsWith(QByteArray("\0\0\2\0", 4));
    return directory.size() == kDirectoryBytes && (isIcon || isCursor) ? directory : QByteArray();
}

// Whether the first picture of an icon has no more bytes than the file. The check is necessary because the
// reader allocates the size that the entry claims. True for other files.
bool isIconWhole(QFile& file) {
    const QByteArray directory = iconDirectory(file);
    return directory.isEmpty() || qFromLittleEndian<quint32>(directory.constData() + 14) <= file.size();
}

// The size of the PNG in the first entry of an icon or a cursor. The PNG is decoded to that size, but the
// reader reports the size that the entry claims. Invalid for other files.
QSize pngInIcon(QFile& file) {
    const QByteArray directory = iconDirectory(file);
    if (directory.isEmpty())
        return {};
    file.seek(qFromLittleEndian<quint32>(directory.constData() + 18));
    const QByteArray header = file.peek(24);
    file.seek(0);
    if (header.size() < 24 || !header.startsWith("\x89PNG"))
        return {};
    return {qFromBigEndian<qint32>(header.constData() + 16), qFromBigEndian<qint32>(header.constData() + 20)};
}

// Whether the pixels are stored as blue, green, red, alpha, with eight bits each.
bool isBgra(QImage::Format format) {
    return format == QImage::Format_RGB32 || format == QImage::Format_ARGB32 ||
           format == QImage::Format_ARGB32_Premultiplied;
}

template<std::size_t N>
bool isOneOf(const char* const (&formats)[N], const QByteArray& format) {
    return std::find(std::begin(formats), std::end(formats), format) != std::end(formats);
}

// Vector graphics may refer to further images, which Qt opens without any check. It blocks on pipes, and an
// image that refers to itself is read until the stack overflows.
constexpr const char* kReferringFormats[] = {"svg", "svgz"};

// It is not known which files the readers of other formats open.
constexpr const char* kSelfContainedFormats[] = {"bmp",  "cur",  "dds",  "gif",  "icns", "ico", "jp2",
                                                 "jpeg", "jpg",  "pbm",  "pgm",  "png",  "ppm", "tga",
                                                 "tif",  "tiff", "wbmp", "webp", "xbm",  "xpm"};

// Requires: the device of `reader` is one of `files`, or null if it could not be opened.
bool mayBeRead(const QImageReader& reader, const ModelFiles& files) {
    if (reader.device() == nullptr)
        return false;
    return files.folder().isNull() ? !isOneOf(kReferringFormats, reader.format())
                                   : isOneOf(kSelfContainedFormats, reader.format());
}

constexpr QLatin1Char kBackslash('\\');

QString withSlashes(QString path) {
    return path.replace(kBackslash, QLatin1Char('/'));
}

// Opens the file that a material refers to by `path`. Other systems write backslashes: if there is no such
// file, they are read as slashes.
std::unique_ptr<QFile> openMaterialFile(const ModelFiles& files, const QString& path) {
    std::unique_ptr<QFile> file = files.open(path);
    return file || !path.contains(kBackslash) ? std::move(file) : files.open(withSlashes(path));
}

// Reads an image; null if the file is not a readable image. Rows run from bottom to top, as OpenGL expects.
QImage readImage(const std::unique_ptr<QFile>& file, const ModelFiles& files) {
    const bool isSmall = file && fits(gifScreen(*file)) && isIconWhole(*file) && fits(pngInIcon(*file));
    QImageReader reader(file.get());
    // Not every format reports its size before it is decoded.
    if (!isSmall || !mayBeRead(reader, files) || !fits(reader.size()))
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
    // The alignment remains 1 afterwards. This is intentional.
    gl.pixelStorei(kGlUnpackAlignment, 1);
    gl.texParameteri(kGlTexture2D, kGlMinFilter, kGlLinearMipmapLinear);
    gl.texParameteri(kGlTexture2D, kGlMagFilter, kGlLinear);
    gl.texParameteri(kGlTexture2D, kGlWrapS, kGlRepeat);
    gl.texParameteri(kGlTexture2D, kGlWrapT, kGlRepeat);
    gl.texParameteri(kGlTexture2D, kGlBaseLevel, 0);
    gl.texParameteri(kGlTexture2D, kGlMaxLevel, kLastLevel);
    gl.texImage2D(kGlTexture2D, 0, kGlRgba, image.width(), image.height(), 0, kGlBgra, kGlUnsignedByte,
                  image.constBits());
    gl.generateMipmap(texture.target());
}

// Makes a texture, which calls `read` now and again in each further group of contexts.
// Returns: null if there is no image, or no texture can be bound.
std::unique_ptr<Texture> makeTexture(const std::function<QImage()>& read) {
    const QImage image = read();
    if (image.isNull())
        return nullptr;
    auto texture =
        std::make_unique<Texture>(kGlTexture2D, kGlRgba, image.width(), image.height(), 0, nullptr);
    const bool canBeBound = texture->bind();
    texture->unbind();
    // The image would be written to whichever texture is bound.
    if (!canBeBound)
        return nullptr;
    const AutoBinder binder(texture.get());
    fill(*texture, image);
    texture->setReadOnly();
    texture->setRefill([read](Texture& lost) {
        const QImage again = read();
        const bool isSame = again.size() == QSize(lost.width(), lost.height());
        if (isSame)
            fill(lost, again);
        return isSame;
    });
    return texture;
}

} // namespace

Texture* LoadTexture(const QString& path) {
    // The textures are never deleted, because a caller may use one until the process ends.
    static QHash<QString, Texture*> cache;
    if (Texture* known = cache.value(path))
        return known;
    const ModelFiles files;
    std::unique_ptr<Texture> texture =
        makeTexture([files, path] { return readImage(files.open(path), files); });
    if (texture)
        cache.insert(path, texture.get());
    return texture.release();
}

Texture* loadMaterialTexture(const QString& path) {
    Texture* texture = LoadTexture(path);
    return texture || !path.contains(kBackslash) ? texture : LoadTexture(withSlashes(path));
}

GPUModel::TextureLoader makeTextureLoader(const ModelFiles& files) {
    return [files](const QString& path) -> std::shared_ptr<Texture> {
        return makeTexture([files, path] { return readImage(openMaterialFile(files, path), files); });
    };
}

QSize readTextureSize(const ModelFiles& files, const QString& path) {
    const std::unique_ptr<QFile> file = openMaterialFile(files, path);
    const QImageReader reader(file.get());
    const QSize size = mayBeRead(reader, files) ? reader.size() : QSize();
    return size.width() < 0 ? QSize() : QSize(size.width(), qAbs(size.height()));
}

} // namespace Atelier::Vel
