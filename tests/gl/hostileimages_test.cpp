// Images of extreme sizes, cut off and damaged, of every format that Qt reads here.

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

#include "support/glfixture.h"
#include "support/messagelog.h"
#include "support/scale.h"

namespace Atelier::Vel {

namespace {

using Testing::MessageLog;
using Testing::scaled;

int standInSide = 0;

/// Lets OpenGL say that a texture may have so many pixels on a side.
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

/// An image file of some format; empty where Qt cannot write it.
QByteArray encoded(const QImage& image, const QByteArray& format) {
    if (format == "gif" && image.size() == QSize(2, 2))
        return QByteArray::fromHex("474946383961020002008000000000"
                                   "00ffffff2c00000000020002000002028451003b");
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QImageWriter(&buffer, format).write(image);
    return bytes;
}

/// The checksum at the end of a part of a PNG.
quint32 checksum(const QByteArray& bytes) {
    quint32 sum = ~quint32{0};
    for (const char byte : bytes) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum >> 1) ^ ((sum & 1) != 0 ? 0xEDB88320U : 0U);
    }
    return ~sum;
}

QByteArray bigEndian(quint32 value) {
    QByteArray bytes(4, Qt::Uninitialized);
    qToBigEndian(value, bytes.data());
    return bytes;
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
    QByteArray jpeg = encoded(gradient(8, 8), "jpeg");
    // In a frame header, the height and the width come behind its length and the bits of a sample.
    jpeg.replace(jpeg.indexOf(QByteArray::fromHex("ffc0")) + 5, 4, big + big);
    QByteArray png = QByteArray::fromHex("0000000d49484452") + zeros + big + zeros + big +
                     QByteArray::fromHex("0806000000");
    return {
        {"bmp", QByteArray("BM") + QByteArray::fromHex("46000000000000003600000028000000") + little + zeros +
                    little + zeros + QByteArray::fromHex("01002000") + QByteArray(28, '\0')},
        {"gif", "GIF89a" + little + little + QByteArray::fromHex("800000000000ffffff2c00000000") + little +
                    little + QByteArray::fromHex("000202845100 3b")},
        {"jpeg", jpeg},
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
    /// The texture of an image file with this content, under a name of its own.
    Texture* load(const QByteArray& bytes) {
        QFile file(_directory.filePath(QString::number(++_count)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        file.close();
        return LoadTexture(file.fileName());
    }

    MessageLog _log; // what is wrong with the images

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

TEST_F(HostileImagesTest, SideAtTheDriversLimitIsATextureAndOneBeyondIsNull) {
    GLint side = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &side);
    EXPECT_NE(load(encoded(QImage(side, 1, QImage::Format_Grayscale8), "png")), nullptr);
    EXPECT_EQ(load(encoded(QImage(side + 1, 1, QImage::Format_Grayscale8), "png")), nullptr);
    EXPECT_EQ(load(encoded(QImage(1, side + 1, QImage::Format_Grayscale8), "png")), nullptr);
}

TEST_F(HostileImagesTest, TensOfThousandsOfPixelsOnASideInAFewBytesAreNull) {
    // The headers are sound: such a size is one that Qt takes in every format.
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

TEST_F(HostileImagesTest, ImageCutOffAnywhereIsNullOrOfItsSize) {
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

TEST_F(HostileImagesTest, EveryFormatThatQtReadsHereIsTested) {
    QByteArrayList untested;
    for (const QByteArray& format : QImageReader::supportedImageFormats())
        if (encoded(gradient(2, 2), format).isEmpty())
            untested << format;
    // Vector graphics are refused, see the texture loader's own tests.
    EXPECT_THAT(untested, testing::IsSubsetOf({QByteArray("svg"), QByteArray("svgz")}));
}

} // namespace Atelier::Vel
