// Images of extreme sizes, truncated and damaged images, in every format that this Qt reads.

#include <velmodel/textureloader.h>

#include <random>

#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QtEndian>
#include <QtGui/QColor>
#include <QtGui/QImage>
#include <QtGui/QImageReader>
#include <QtGui/QImageWriter>

#include <epoxy/gl.h>

#include <gmock/gmock.h>

#include <velgl/glentrypoints.h>
#include <velgl/texture.h>
#include <velmodel/modelfiles.h>

#include "support/glfixture.h"
#include "support/messagelog.h"
#include "support/scale.h"

namespace Atelier::Vel {

namespace {

using Testing::MessageLog;
using Testing::scaled;

int standInSide = 0;

/// Replaces the maximum texture size that OpenGL reports.
class LargestSide {
public:
    explicit LargestSide(int side) : _real(glEntryPoints().getIntegerv) {
        standInSide = side;
        glEntryPoints().getIntegerv = [](unsigned int, int* value) { *value = standInSide; };
    }
    ~LargestSide() { glEntryPoints().getIntegerv = _real; }
    LargestSide(const LargestSide&) = delete;
    LargestSide& operator=(const LargestSide&) = delete;

private:
    decltype(GLEntryPoints::getIntegerv) _real;
};

QImage gradient(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixelColor(x, y, QColor(x * 20 % 256, y * 20 % 256, 90));
    return image;
}

/// An image file of a format; empty if Qt cannot write it.
QByteArray encoded(const QImage& image, const QByteArray& format) {
    if (format == "gif" && image.size() == QSize(2, 2))
        return QByteArray::fromHex("474946383961020002008000000000"
                                   "00ffffff2c00000000020002000002028451003b");
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QImageWriter(&buffer, format).write(image);
    return bytes;
}

/// The checksum at the end of a PNG chunk.
quint32 checksum(const QByteArray& bytes) {
    quint32 sum = ~quint32{0};
    for (const char byte : bytes) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum >> 1) ^ ((sum & 1) != 0 ? 0xEDB88320U : 0U);
    }
    return ~sum;
}

QByteArray littleEndian(quint32 value) {
    QByteArray bytes(4, Qt::Uninitialized);
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray bigEndian(quint32 value) {
    QByteArray bytes(4, Qt::Uninitialized);
    qToBigEndian(value, bytes.data());
    return bytes;
}

/// A JPEG of 8 by 8 pixels that claims another size.
QByteArray jpegOf(quint16 width, quint16 height) {
    QByteArray jpeg = encoded(gradient(8, 8), "jpeg");
    // In a frame header, the height and the width follow the length and the bits per sample.
    char* const sizes = jpeg.data() + jpeg.indexOf(QByteArray::fromHex("ffc0")) + 5;
    qToBigEndian(height, sizes);
    qToBigEndian(width, sizes + 2);
    return jpeg;
}

/// An icon or a cursor with one picture; its entry claims 16 by 16 pixels.
QByteArray icon(const char* kind, const QByteArray& picture, quint32 claimedBytes) {
    return QByteArray::fromHex(kind) + QByteArray::fromHex("0100101000000100") + QByteArray::fromHex("2000") +
           littleEndian(claimedBytes) + littleEndian(22) + picture;
}

QByteArray icon(const char* kind, const QByteArray& picture) {
    return icon(kind, picture, static_cast<quint32>(picture.size()));
}

/// A few bytes that claim to be an image with `side` pixels on each side.
struct HugeImage {
    const char* format;
    QByteArray bytes;
};

QList<HugeImage> hugeImages(quint16 side) {
    const QByteArray text = QByteArray::number(side);
    const QByteArray low(1, static_cast<char>(side & 0xFF));
    const QByteArray high(1, static_cast<char>(side >> 8));
    const QByteArray zeros(2, '\0');
    const QByteArray little = low + high;
    const QByteArray big = high + low;
    const QByteArray png = QByteArray::fromHex("0000000d49484452") + zeros + big + zeros + big +
                           QByteArray::fromHex("0806000000");
    return {
        {"bmp", QByteArray("BM") + QByteArray::fromHex("46000000000000003600000028000000") + little + zeros +
                    little + zeros + QByteArray::fromHex("01002000") + QByteArray(28, '\0')},
        {"gif", "GIF89a" + little + little + QByteArray::fromHex("800000000000ffffff2c00000000") + little +
                    little + QByteArray::fromHex("000202845100 3b")},
        {"jpeg", jpegOf(side, side)},
        {"pbm", "P4\n" + text + ' ' + text + '\n'},
        {"pgm", "P5\n" + text + ' ' + text + "\n255\n"},
        {"ppm", "P6\n" + text + ' ' + text + "\n255\n"},
        {"png", QByteArray::fromHex("89504e470d0a1a0a") + png + bigEndian(checksum(png.mid(4))) +
                    bigEndian(0) + "IDAT" + bigEndian(checksum("IDAT"))},
        {"xbm",
         "#define a_width " + text + "\n#define a_height " + text + "\nstatic char a_bits[] = {\n0x01 };\n"},
        {"xpm",
         "/* XPM */\nstatic char *a[] = {\n\"" + text + ' ' + text + " 1 1\",\n\"a c #000000\",\n\"a\"};\n"},
    };
}

class HostileImagesTest : public Testing::GLFixture {
protected:
    /// The texture of a new image file with this content.
    Texture* load(const QByteArray& bytes) { return LoadTexture(write(bytes)); }
    QString write(const QByteArray& bytes) {
        QFile file(_directory.filePath(QString::number(++_count)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return file.fileName();
    }
    QString folder() const { return _directory.path(); }

    MessageLog _log; // errors in the images

private:
    QTemporaryDir _directory;
    int _count = 0;
};

} // namespace

TEST_F(HostileImagesTest, OnePixelIsATexture) {
    for (const QByteArray& format : QImageWriter::supportedImageFormats()) {
        const Texture* texture = load(encoded(gradient(1, 1), format));
        ASSERT_NE(texture, nullptr) << format.constData();
        EXPECT_EQ(texture->width(), 1) << format.constData();
        EXPECT_EQ(texture->height(), 1) << format.constData();
    }
}

TEST_F(HostileImagesTest, SideAtTheDriversLimitIsATextureAndALargerSideIsNull) {
    GLint side = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &side);
    EXPECT_NE(load(encoded(QImage(side, 1, QImage::Format_Grayscale8), "png")), nullptr);
    EXPECT_EQ(load(encoded(QImage(side + 1, 1, QImage::Format_Grayscale8), "png")), nullptr);
    EXPECT_EQ(load(encoded(QImage(1, side + 1, QImage::Format_Grayscale8), "png")), nullptr);
}

TEST_F(HostileImagesTest, SmallFilesThatClaimHugeImagesAreNull) {
    // The headers are valid: Qt accepts this size in every format.
    constexpr quint16 kPossible = 16'000;
    for (const HugeImage& image : hugeImages(kPossible)) {
        QBuffer buffer;
        buffer.setData(image.bytes);
        ASSERT_TRUE(buffer.open(QIODevice::ReadOnly));
        EXPECT_EQ(QImageReader(&buffer, image.format).size(), QSize(kPossible, kPossible)) << image.format;
    }
    for (const int allowed : {16'384, 100'000}) {
        const LargestSide limit(allowed);
        for (const quint16 side : {quint16{20'000}, quint16{32'767}, quint16{65'535}})
            for (const HugeImage& image : hugeImages(side))
                EXPECT_EQ(load(image.bytes), nullptr) << image.format << ' ' << side;
    }
}

TEST_F(HostileImagesTest, TruncatedImageIsNullOrHasItsFullSize) {
    for (const QByteArray& format : QImageReader::supportedImageFormats()) {
        const QSize size(2, 2);
        const QByteArray whole = encoded(gradient(2, 2), format);
        for (int length = 0; length < whole.size(); length += 1 + whole.size() / scaled(200)) {
            const Texture* texture = load(whole.left(length));
            if (texture != nullptr) {
                EXPECT_EQ(QSize(texture->width(), texture->height()), size) << format.constData() << length;
            }
        }
    }
}

TEST_F(HostileImagesTest, DamagedImageIsNullOrNoLargerThanAllowed) {
    constexpr int kSide = 64;
    const LargestSide limit(kSide);
    std::mt19937 random(406);
    for (const QByteArray& format : QImageReader::supportedImageFormats()) {
        const QByteArray whole = encoded(format == "gif" ? gradient(2, 2) : gradient(20, 12), format);
        for (int round = scaled(100); round > 0 && !whole.isEmpty(); --round) {
            QByteArray damaged = whole;
            for (auto count = 1 + random() % 6; count > 0; --count)
                damaged[static_cast<int>(random() % static_cast<unsigned int>(damaged.size()))] =
                    static_cast<char>(random());
            const Texture* texture = load(damaged);
            if (texture != nullptr) {
                EXPECT_LE(texture->width(), kSide) << format.constData();
                EXPECT_LE(texture->height(), kSide) << format.constData();
            }
        }
    }
}

TEST_F(HostileImagesTest, EveryFormatWithPixelsLoadsFromAFolderToo) {
    for (const QByteArray& format : QImageReader::supportedImageFormats()) {
        const QByteArray bytes = encoded(gradient(2, 2), format);
        if (bytes.isEmpty())
            continue;
        const QString file = write(bytes);
        const std::shared_ptr<Texture> texture = makeTextureLoader(ModelFiles(folder()))(file);
        ASSERT_NE(texture, nullptr) << format.constData();
        EXPECT_EQ(QSize(texture->width(), texture->height()), QSize(2, 2)) << format.constData();
        EXPECT_EQ(readTextureSize(ModelFiles(folder()), file), QImageReader(file).size())
            << format.constData();
    }
}

// The reader reports a missing table when it decodes, before it allocates the pixels.
TEST_F(HostileImagesTest, ImageOfAGibibyteIsDecodedAndALargerOneIsNot) {
    const LargestSide limit(100'000);
    const struct {
        quint16 width, height;
        bool isDecoded;
    } cases[] = {{16'384, 16'384, true}, {16'384, 16'385, false}, {16'385, 16'384, false},
                 {32'768, 8'192, true},  {8'192, 32'769, false},  {32'767, 8'192, true}};
    for (const auto& [width, height, isDecoded] : cases) {
        QByteArray jpeg = jpegOf(width, height);
        const int table = jpeg.indexOf(QByteArray::fromHex("ffdb"));
        jpeg.remove(table, 2 + qFromBigEndian<quint16>(jpeg.constData() + table + 2));
        EXPECT_EQ(load(jpeg), nullptr);
        EXPECT_EQ(_log.texts(QtWarningMsg).size(), isDecoded ? 1u : 0u) << width << " x " << height;
        _log.clear();
    }
}

// The decoder ignores the size that the icon's entry claims.
TEST_F(HostileImagesTest, SizeOfThePngInAnIconIsChecked) {
    const LargestSide limit(16);
    for (const char* kind : {"00000100", "00000200"})
        for (const QSize& size : {QSize(16, 16), QSize(17, 1), QSize(1, 17), QSize(16, 1), QSize(1, 16)}) {
            const bool fits = size.width() <= 16 && size.height() <= 16;
            const Texture* texture = load(icon(kind, encoded(gradient(size.width(), size.height()), "png")));
            EXPECT_EQ(texture != nullptr, fits) << kind << ' ' << size.width() << " x " << size.height();
            if (texture != nullptr) {
                EXPECT_EQ(QSize(texture->width(), texture->height()), size) << kind;
            }
        }
}

TEST_F(HostileImagesTest, ScreenSizeOfAGifIsChecked) {
    const LargestSide limit(255);
    // A picture of 2 by 2 pixels; each side of the screen is stored in two bytes.
    const auto gif = [](const char* screen) {
        return QByteArray::fromHex(QByteArray("474946383961") + screen +
                                   "8000000000 00ffffff2c00000000020002000002028451003b");
    };
    for (const char* screen : {"02000200", "ff00ff00", "ff000200", "0200ff00"})
        EXPECT_NE(load(gif(screen)), nullptr) << screen;
    for (const char* screen : {"00010200", "02000001", "00ff0200", "020000ff"})
        EXPECT_EQ(load(gif(screen)), nullptr) << screen;
}

TEST_F(HostileImagesTest, IconThatClaimsMoreBytesThanItsFileIsNull) {
    const QByteArray png = encoded(gradient(2, 2), "png");
    const auto bytesOfFile = static_cast<quint32>(icon("00000100", png).size());
    EXPECT_NE(load(icon("00000100", png, bytesOfFile)), nullptr);
    EXPECT_EQ(load(icon("00000100", png, bytesOfFile + 1)), nullptr);
}

TEST_F(HostileImagesTest, EveryFormatThatQtReadsIsTested) {
    QByteArrayList untested;
    for (const QByteArray& format : QImageReader::supportedImageFormats())
        if (encoded(gradient(2, 2), format).isEmpty())
            untested << format;
    // Vector graphics are rejected; see textureloader_test.cpp.
    EXPECT_THAT(untested, testing::IsSubsetOf({QByteArray("svg"), QByteArray("svgz")}));
}

} // namespace Atelier::Vel
