#include <velmodel/textureloader.h>

#include <QtCore/QBuffer>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QtEndian>
#include <QtGui/QImage>
#include <QtGui/QImageReader>

#include <epoxy/gl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velgl/texture.h>
#include <velmodel/modelfiles.h>

#include "entrypointlog.h"
#include "support/hangguard.h"
#include "support/hostilepaths.h"
#include "support/messagelog.h"
#include "support/sanitizer.h"
#include "support/withoutrootsrights.h"
#include "texturefixture.h"

namespace Atelier::Vel {

namespace {

class TextureLoaderTest : public TextureFixture {
protected:
    /// For images that exceed a driver's usual limit and whose pixels take much memory.
    static void expectRefusalWithoutDecoding(const QString& file) {
        constexpr long kFewKilobytes = 40'000;
        EntryPointLog log;
        log.integers[GL_MAX_TEXTURE_SIZE] = 16'384;
        // Resets the peak of memory.
        QFile peak(QStringLiteral("/proc/self/clear_refs"));
        ASSERT_TRUE(peak.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && peak.write("5") == 1);
        rusage before{};
        rusage after{};
        getrusage(RUSAGE_SELF, &before);
        EXPECT_EQ(LoadTexture(file), nullptr);
        getrusage(RUSAGE_SELF, &after);
        EXPECT_LT(after.ru_maxrss - before.ru_maxrss, kFewKilobytes);
        EXPECT_TRUE(log.calls.isEmpty());
    }
};

} // namespace

TEST_F(TextureLoaderTest, SamePathGivesTheSameTextureWithoutASecondRead) {
    const QString file = save(numbered(4, 4), QStringLiteral("a.png"));
    Texture* first = LoadTexture(file);
    ASSERT_NE(first, nullptr);
    ASSERT_TRUE(QFile::remove(file));
    const EntryPointLog log;
    EXPECT_EQ(LoadTexture(file), first);
    EXPECT_TRUE(log.calls.isEmpty());
}

TEST_F(TextureLoaderTest, PathsAreKeysAsTheyAreWritten) {
    const QString file = save(numbered(4, 4), QStringLiteral("a.png"));
    const QString sameFile = path(QStringLiteral("./a.png"));
    EXPECT_NE(LoadTexture(file), LoadTexture(sameFile));
}

TEST_F(TextureLoaderTest, MissingFileIsTriedAgain) {
    const QString file = path(QStringLiteral("late.png"));
    EXPECT_EQ(LoadTexture(file), nullptr);
    save(numbered(2, 2), QStringLiteral("late.png"));
    EXPECT_NE(LoadTexture(file), nullptr);
}

TEST_F(TextureLoaderTest, FileThatIsNoImageIsNull) {
    EXPECT_EQ(LoadTexture(QString()), nullptr);
    EXPECT_EQ(LoadTexture(path(QString())), nullptr);
    EXPECT_EQ(LoadTexture(QStringLiteral("/dev/zero")), nullptr);
    ASSERT_EQ(mkfifo(QFile::encodeName(path(QStringLiteral("pipe.png"))).constData(), 0600), 0);
    EXPECT_EQ(LoadTexture(path(QStringLiteral("pipe.png"))), nullptr);
    QFile text(path(QStringLiteral("text.png")));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write("this is no picture");
    text.close();
    EXPECT_EQ(LoadTexture(text.fileName()), nullptr);
}

TEST_F(TextureLoaderTest, TruncatedImageIsNullOrWhole) {
    const QString file = save(numbered(10, 8), QStringLiteral("whole.png"));
    QFile whole(file);
    ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
    const QByteArray bytes = whole.readAll();
    for (int length = 0; length < bytes.size(); length += 3) {
        QFile part(path(QStringLiteral("part%1.png").arg(length)));
        ASSERT_TRUE(part.open(QIODevice::WriteOnly));
        part.write(bytes.left(length));
        part.close();
        const Texture* texture = LoadTexture(part.fileName());
        if (texture != nullptr) {
            EXPECT_EQ(texture->width(), 10);
        }
    }
}

TEST_F(TextureLoaderTest, CallsComeInTheDefinedOrder) {
    const QString file = save(numbered(3, 5), QStringLiteral("order.png"));
    const EntryPointLog log;
    ASSERT_NE(LoadTexture(file), nullptr);
    EXPECT_EQ(log.calls,
              QStringList({"pixelStorei cf5 1", "texParameteri de1 2801 2703", "texParameteri de1 2800 2601",
                           "texParameteri de1 2802 2901", "texParameteri de1 2803 2901",
                           "texParameteri de1 813c 0", "texParameteri de1 813d 4",
                           "texImage2D de1 0 1908 3 5 0 80e1 1401", "generateMipmap de1"}));
}

TEST_F(TextureLoaderTest, TopLeftPixelBeginsTheLastRow) {
    const QImage image = numbered(3, 5);
    const Texture* texture = LoadTexture(save(image, QStringLiteral("3x5.png")));
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(texture->width(), 3);
    EXPECT_EQ(texture->height(), 5);
    EXPECT_EQ(texture->target(), static_cast<unsigned int>(GL_TEXTURE_2D));
    EXPECT_EQ(texture->internalFormat(), GL_RGBA);
    EXPECT_TRUE(texture->isReadOnly());
    const QImage content = texture->readBack();
    ASSERT_EQ(content.size(), image.size());
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 3; ++x)
            EXPECT_EQ(content.pixelColor(x, 4 - y), image.pixelColor(x, y)) << x << ' ' << y;
}

TEST_F(TextureLoaderTest, UnpackAlignmentStaysAtOne) {
    glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
    ASSERT_NE(LoadTexture(save(numbered(3, 3), QStringLiteral("alignment.png"))), nullptr);
    GLint alignment = 0;
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    EXPECT_EQ(alignment, 1);
}

TEST_F(TextureLoaderTest, TextureIsUnboundAfterTheLoad) {
    ASSERT_NE(LoadTexture(save(numbered(3, 3), QStringLiteral("bound.png"))), nullptr);
    GLint bound = -1;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    EXPECT_EQ(bound, 0);
}

TEST_F(TextureLoaderTest, OtherPixelFormatsAreConverted) {
    for (const QImage::Format format : {QImage::Format_Indexed8, QImage::Format_Grayscale8,
                                        QImage::Format_RGB888, QImage::Format_RGBA64, QImage::Format_Mono}) {
        const QString file = save(numbered(5, 3, format), QStringLiteral("format%1.png").arg(format));
        const Texture* texture = LoadTexture(file);
        ASSERT_NE(texture, nullptr) << format;
        const QImage expected = QImage(file).convertToFormat(QImage::Format_RGBA8888).mirrored(false, true);
        EXPECT_EQ(texture->readBack(), expected) << format;
    }
}

// Readers of icons premultiply colours by alpha. The bytes are used unchanged.
TEST_F(TextureLoaderTest, MultipliedColoursAreNotConvertedBack) {
    QImage image(4, 2, QImage::Format_ARGB32);
    image.fill(QColor(200, 100, 50, 128));
    const QString file = save(image, QStringLiteral("glass.ico"));
    const QImage read(file);
    ASSERT_EQ(read.format(), QImage::Format_ARGB32_Premultiplied);
    const QImage bytes(read.constBits(), 4, 2, read.bytesPerLine(), QImage::Format_ARGB32);
    const Texture* texture = LoadTexture(file);
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(texture->readBack(), bytes.convertToFormat(QImage::Format_RGBA8888).mirrored(false, true));
}

TEST_F(TextureLoaderTest, FurtherFileFormatsLoad) {
    for (const char* suffix : {"bmp", "ppm", "xpm"}) {
        const QString file = save(numbered(4, 2, QImage::Format_RGB32), QStringLiteral("picture.") + suffix);
        const Texture* texture = LoadTexture(file);
        ASSERT_NE(texture, nullptr) << suffix;
        EXPECT_EQ(texture->readBack().pixelColor(0, 1), QImage(file).pixelColor(0, 0)) << suffix;
    }
}

// Qt would read the picture inside the picture recursively until the stack overflows.
TEST_F(TextureLoaderTest, SvgIsNullSinceItMayReferToItself) {
    if (!QImageReader::supportedImageFormats().contains("svg"))
        GTEST_SKIP() << "this Qt reads no SVG";
    const QByteArray text = "<svg xmlns='http://www.w3.org/2000/svg' width='8' height='8' "
                            "xmlns:xlink='http://www.w3.org/1999/xlink'>"
                            "<image width='8' height='8' xlink:href='%1'/></svg>";
    for (const char* name : {"picture.svg", "disguised.png"}) {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(text).replace("%1", QFile::encodeName(file.fileName())));
        file.close();
        EXPECT_EQ(QImageReader(file.fileName()).format(), "svg");
        EXPECT_EQ(LoadTexture(file.fileName()), nullptr);
        EXPECT_EQ(makeTextureLoader(ModelFiles(path(QString())))(file.fileName()), nullptr);
        EXPECT_FALSE(readTextureSize(ModelFiles(), file.fileName()).isValid());
    }
}

TEST_F(TextureLoaderTest, SizeOfATopDownBitmapIsPositive) {
    const QString name = save(numbered(4, 2, QImage::Format_RGB32), "down.bmp");
    QFile file(name);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(22));
    const qint32 height = qToLittleEndian(qint32(-2));
    ASSERT_EQ(file.write(reinterpret_cast<const char*>(&height), sizeof height), qint64(sizeof height));
    file.close();
    EXPECT_EQ(readTextureSize(ModelFiles(), name), QSize(4, 2));
    EXPECT_NE(LoadTexture(name), nullptr);
}

TEST_F(TextureLoaderTest, OnlyFilesInsideTheFolderAreLoaded) {
    ASSERT_TRUE(QDir(path(QString())).mkpath("model"));
    const ModelFiles files(path("model"));
    const GPUModel::TextureLoader load = makeTextureLoader(files);
    const QString outside = save(numbered(4, 2), "out.png");
    for (const char* suffix : {"png", "bmp", "ppm", "xpm", "jpg"}) {
        const QString inside = save(numbered(4, 2, QImage::Format_RGB32), QString("model/in.") + suffix);
        const std::shared_ptr<Texture> texture = load(inside);
        ASSERT_NE(texture, nullptr) << suffix;
        EXPECT_EQ(texture->readBack().pixelColor(0, 1), QImage(inside).pixelColor(0, 0)) << suffix;
        EXPECT_EQ(readTextureSize(files, inside), QSize(4, 2)) << suffix;
    }
    EXPECT_NE(LoadTexture(outside), nullptr);
    EXPECT_EQ(load(outside), nullptr) << "cached, but not in this folder";
    EXPECT_EQ(load(path("model/../out.png")), nullptr);
    EXPECT_FALSE(readTextureSize(files, outside).isValid());
}

TEST_F(TextureLoaderTest, HostilePathsAreNull) {
    const Testing::HostilePaths hostile;
    for (const Testing::HostilePath& one : hostile.paths()) {
        const Testing::WithoutRootsRights asAnybody;
        const Testing::HangGuard guard(5);
        EXPECT_EQ(LoadTexture(one.path), nullptr) << one.kind;
    }
}

TEST_F(TextureLoaderTest, SideAboveTheDriversLimitIsNull) {
    EntryPointLog log;
    log.integers[GL_MAX_TEXTURE_SIZE] = 16;
    EXPECT_NE(LoadTexture(save(numbered(16, 2), QStringLiteral("wide.png"))), nullptr);
    log.calls.clear();
    EXPECT_EQ(LoadTexture(save(numbered(17, 2), QStringLiteral("wider.png"))), nullptr);
    EXPECT_EQ(LoadTexture(save(numbered(2, 17), QStringLiteral("higher.png"))), nullptr);
    EXPECT_TRUE(log.calls.isEmpty());
}

// A sparse file takes no disk space; the decoded image would take 1.6 GB.
TEST_F(TextureLoaderTest, HugeImageIsNullBeforeItIsDecoded) {
    EntryPointLog log;
    log.integers[GL_MAX_TEXTURE_SIZE] = 100'000;
    QFile file(path(QStringLiteral("huge.ppm")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const qint64 header = file.write("P6\n20000 20000\n255\n");
    ASSERT_TRUE(file.resize(header + qint64(3) * 20000 * 20000));
    file.close();
    EXPECT_EQ(LoadTexture(file.fileName()), nullptr);
    EXPECT_TRUE(log.calls.isEmpty());
}

// A top-down bitmap has a negative height. The file is sparse; its pixels would take 80 MB.
TEST_F(TextureLoaderTest, HugeTopDownBitmapIsNullBeforeItIsDecoded) {
    const qint32 info[] = {40, 1000, -20'000, 1 | 32 << 16, 0, 0, 0, 0, 0, 0};
    constexpr qint32 kHeaderBytes = 14 + sizeof info;
    const qint32 places[] = {kHeaderBytes + 4 * 1000 * 20'000, 0, kHeaderBytes};
    QFile file(path(QStringLiteral("huge.bmp")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("BM");
    file.write(reinterpret_cast<const char*>(places), sizeof places);
    file.write(reinterpret_cast<const char*>(info), sizeof info);
    ASSERT_TRUE(file.resize(places[0]));
    file.close();
    expectRefusalWithoutDecoding(file.fileName());
}

// Qt reports the size that the icon's entry claims, 16 by 16 pixels; the PNG in it has 1000 by 20000.
TEST_F(TextureLoaderTest, IconWithAHugePngIsNullBeforeItIsDecoded) {
    QImage image(1000, 20'000, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QByteArray png;
    QBuffer buffer(&png);
    ASSERT_TRUE(image.save(&buffer, "PNG"));
    image = {};
    for (const char* kind : {"00000100", "00000200"}) {
        QFile file(path(QStringLiteral("huge.ico")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        const quint32 places[] = {static_cast<quint32>(png.size()), 22};
        file.write(QByteArray::fromHex(kind) + QByteArray::fromHex("0100101000000100") +
                   QByteArray::fromHex("2000") +
                   QByteArray(reinterpret_cast<const char*>(places), sizeof places) + png);
        file.close();
        ASSERT_EQ(QImageReader(file.fileName()).size(), QSize(16, 16));
        expectRefusalWithoutDecoding(file.fileName());
    }
}

// Qt reports the size of a GIF's first picture, 2 by 2 pixels; the screen of 1000 by 20000 would take 80 MB.
TEST_F(TextureLoaderTest, GifWithAHugeScreenIsNullBeforeItIsDecoded) {
    QFile file(path(QStringLiteral("huge.gif")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray::fromHex("474946383961"
                                   "e803204e800000"
                                   "000000ffffff"
                                   "2c00000000020002000002028451003b"));
    file.close();
    expectRefusalWithoutDecoding(file.fileName());
}

// The icon reader would allocate the two gigabytes that the entry claims; the file has only a few bytes.
TEST_F(TextureLoaderTest, IconThatClaimsMoreThanTheFileIsNullBeforeItIsRead) {
    if (VELMODEL_ADDRESS_SANITIZER != 0)
        GTEST_SKIP() << "the sanitizer needs more address space than the limit allows";
    QFile file(path(QStringLiteral("claim.ico")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray::fromHex("000001000100"
                                   "0101000001002000"
                                   "f0ffff7f"
                                   "16000000"
                                   "89504e470d0a1a0a0000000d49484452"));
    file.close();
    QFile usage(QStringLiteral("/proc/self/statm"));
    ASSERT_TRUE(usage.open(QIODevice::ReadOnly));
    const rlim_t pages = usage.readAll().split(' ').first().toULongLong();
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    const rlimit tight = {pages * 4096 + (rlim_t(1) << 30), before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &tight), 0);
    EXPECT_EQ(LoadTexture(file.fileName()), nullptr);
    setrlimit(RLIMIT_AS, &before);
}

} // namespace Atelier::Vel
