#include "textures/imagereading.h"

#include <algorithm>
#include <iterator>

#include <QtCore/QBuffer>
#include <QtCore/QFileDevice>
#include <QtCore/QtEndian>

#include "files/filesource.h"
#include "files/sourcedevice.h"

namespace Atelier::Vel {

namespace {

constexpr qint64 kLargestImageBytes = qint64(1) << 30;
constexpr int kBytesPerPixel = 4;

// The screen size of a GIF. A GIF is decoded to that size, but its reader reports the size of the first
// picture. Invalid for other files.
QSize gifScreen(QIODevice& file) {
    const QByteArray header = file.peek(10);
    if (header.size() < 10 || !header.startsWith("GIF8"))
        return {};
    return {qFromLittleEndian<quint16>(header.constData() + 6),
            qFromLittleEndian<quint16>(header.constData() + 8)};
}

// The header and the first entry of an icon or a cursor; empty for other files.
QByteArray iconDirectory(QIODevice& file) {
    constexpr int kDirectoryBytes = 22;
    const QByteArray directory = file.peek(kDirectoryBytes);
    const bool isIcon = directory.startsWith(QByteArray("\0\0\1\0", 4));
    const bool isCursor = directory.startsWith(QByteArray("\0\0\2\0", 4));
    return directory.size() == kDirectoryBytes && (isIcon || isCursor) ? directory : QByteArray();
}

// Whether the first picture of an icon has no more bytes than the file. The check is necessary because the
// reader allocates the size that the entry claims. True for other files.
bool isIconWhole(QIODevice& file) {
    const QByteArray directory = iconDirectory(file);
    return directory.isEmpty() || qFromLittleEndian<quint32>(directory.constData() + 14) <= file.size();
}

// The size of the PNG in the first entry of an icon or a cursor. The PNG is decoded to that size, but the
// reader reports the size that the entry claims. Invalid for other files.
QSize pngInIcon(QIODevice& file) {
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

// Only files of the system that need not be in a folder may refer to others.
bool isSelfContained(const ModelSource& source) {
    const auto* files = dynamic_cast<const FileSource*>(&source);
    return files == nullptr || !files->files().folder().isNull();
}

// Whether decoders may read a device themselves. Others may be sequential, give short reads, or throw, which
// decoders in C do not clean up after.
bool isReliable(const QIODevice& device) {
    const bool isKnown = qobject_cast<const QFileDevice*>(&device) != nullptr ||
                         qobject_cast<const QBuffer*>(&device) != nullptr;
    return isKnown && !device.isSequential();
}

// The content of a device. Null if it cannot be read to its end or is too large.
std::unique_ptr<QIODevice> copied(QIODevice& device) {
    constexpr int kBytesPerRead = 65536;
    SourceDevice reader(device);
    reader.setTextModeEnabled(false);
    QByteArray content;
    while (!reader.atEnd() && content.size() <= kLargestImageBytes)
        content += reader.read(kBytesPerRead);
    auto copy = std::make_unique<QBuffer>();
    copy->setData(content);
    const bool isWhole = reader.atEnd() && !reader.hasFailed();
    return isWhole && copy->open(QIODevice::ReadOnly) ? std::move(copy) : nullptr;
}

} // namespace

bool mayBeRead(const QImageReader& reader, const ModelSource& source) {
    if (reader.device() == nullptr)
        return false;
    return isSelfContained(source) ? isOneOf(kSelfContainedFormats, reader.format())
                                   : !isOneOf(kReferringFormats, reader.format());
}

QString withSlashes(QString path) {
    return path.replace(QLatin1Char('\\'), QLatin1Char('/'));
}

std::unique_ptr<QIODevice> openImage(ModelSource& source, const QString& path) {
    std::unique_ptr<QIODevice> device = source.open(path);
    if (!device || !device->isReadable())
        return nullptr;
    device->setTextModeEnabled(false);
    return isReliable(*device) ? std::move(device) : copied(*device);
}

std::unique_ptr<QIODevice> openMaterialFile(ModelSource& source, const QString& path) {
    std::unique_ptr<QIODevice> file = openImage(source, path);
    const QString slashed = withSlashes(path);
    return file || slashed == path ? std::move(file) : openImage(source, slashed);
}

qint64 decodedBytes(const QSize& size) {
    return qAbs(qint64(size.width())) * qAbs(qint64(size.height())) * kBytesPerPixel;
}

bool isDecodable(const QSize& size, int largestSide) {
    return qAbs(size.width()) <= largestSide && qAbs(size.height()) <= largestSide &&
           decodedBytes(size) <= kLargestImageBytes;
}

QImage readImage(const std::unique_ptr<QIODevice>& file, const ModelSource& source, SideLimit largestSide) {
    const auto fits = [largestSide](const QSize& size) { return isDecodable(size, largestSide()); };
    const bool isSmall = file && fits(gifScreen(*file)) && isIconWhole(*file) && fits(pngInIcon(*file));
    QImageReader reader(file.get());
    // Not every format reports its size before it is decoded.
    if (!isSmall || !mayBeRead(reader, source) || !fits(reader.size()))
        return {};
    QImage image = reader.read();
    if (image.isNull() || !fits(image.size()))
        return {};
    if (!isBgra(image.format()))
        image = image.convertToFormat(QImage::Format_ARGB32);
    return image.mirrored(false, true);
}

QImage readMaterialImage(ModelSource& source, const QString& path, SideLimit largestSide) {
    return readImage(openMaterialFile(source, path), source, largestSide);
}

} // namespace Atelier::Vel
