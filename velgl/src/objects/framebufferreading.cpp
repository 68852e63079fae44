#include "objects/framebufferdata.h"

#include <algorithm>
#include <limits>

#include <velgl/renderstate.h>

#include "state/pixelstore.h"

namespace Atelier::Vel {

namespace {

using Data = FramebufferAccess::Data;

enum class Content { Floats, Integers, UnsignedIntegers, Depths };

Content contentOf(const ColorFormat& format) {
    if (!format.isInteger())
        return Content::Floats;
    return format.type == GL_INT ? Content::Integers : Content::UnsignedIntegers;
}

const char* nameOf(Content content) {
    switch (content) {
    case Content::Integers:
        return "signed integers";
    case Content::UnsignedIntegers:
        return "unsigned integers";
    case Content::Floats:
        return "floats";
    case Content::Depths:
        break;
    }
    return "depths";
}

// What a call reads, in the pixels of an image.
struct Reading {
    Content content = Content::Floats;
    int color = 0;
    QRect area;
};

// Where it goes: rows in memory, the upper one first.
struct Rows {
    char* first = nullptr;
    GLenum format = GL_RGBA;
    GLenum type = GL_UNSIGNED_BYTE;
    int pixelBytes = 4;
    int stride = 0; // from one row to the next, in pixels

    std::ptrdiff_t strideBytes() const { return std::ptrdiff_t(stride) * pixelBytes; }
};

QString fault(const Data& data, const Reading& reading) {
    if (reading.content == Content::Depths) {
        if (data.options.depth == Framebuffer::Depth::None)
            return QStringLiteral("The framebuffer has no depths");
    } else if (!data.hasColor(reading.color)) {
        return QStringLiteral("The framebuffer has no colour %1").arg(reading.color);
    } else if (const Content held = contentOf(data.format(reading.color)); held != reading.content) {
        return QStringLiteral("Colour %1 holds %2 and cannot be read as %3")
            .arg(reading.color)
            .arg(QLatin1String(nameOf(held)), QLatin1String(nameOf(reading.content)));
    }
    const QRect& area = reading.area;
    if (area.isEmpty() || !QRect(QPoint(0, 0), data.options.size).contains(area))
        return QStringLiteral("The area of %1 x %2 pixels at %3, %4 is not within %5 x %6 pixels")
            .arg(area.width())
            .arg(area.height())
            .arg(area.x())
            .arg(area.y())
            .arg(data.options.size.width())
            .arg(data.options.size.height());
    return {};
}

// Reads floats as they are. Restores the client's choice on destruction.
class ScopedReadClamp {
public:
    ScopedReadClamp() : _clamp(currentName(GL_CLAMP_READ_COLOR)) {
        glClampColor(GL_CLAMP_READ_COLOR, GL_FALSE);
    }
    ~ScopedReadClamp() { glClampColor(GL_CLAMP_READ_COLOR, _clamp); }
    ScopedReadClamp(const ScopedReadClamp&) = delete;
    ScopedReadClamp& operator=(const ScopedReadClamp&) = delete;

private:
    GLenum _clamp;
};

// The rows of OpenGL begin at the lower edge.
void turnOver(const Rows& rows, QSize size) {
    const std::ptrdiff_t bytes = std::ptrdiff_t(size.width()) * rows.pixelBytes;
    for (int upper = 0, lower = size.height() - 1; upper < lower; ++upper, --lower) {
        char* const row = rows.first + upper * rows.strideBytes();
        std::swap_ranges(row, row + bytes, rows.first + lower * rows.strideBytes());
    }
}

void readPixels(GLuint name, int height, const Reading& reading, const Rows& rows) {
    const QRect& area = reading.area;
    {
        const ScopedFramebufferBinding binding(GL_READ_FRAMEBUFFER, name);
        const ScopedPixelStore store(ScopedPixelStore::Direction::Pack);
        const ScopedReadClamp clamp;
        if (reading.content != Content::Depths)
            glReadBuffer(colorAttachment(reading.color));
        glPixelStorei(GL_PACK_ROW_LENGTH, rows.stride);
        glReadPixels(area.x(), height - area.y() - area.height(), area.width(), area.height(), rows.format,
                     rows.type, rows.first);
    }
    turnOver(rows, area.size());
}

// Returns: a framebuffer with the one colour, or the depths, that are read, as colour 0.
std::unique_ptr<Framebuffer> resolved(const Data& data, GLuint name, const Reading& reading, QString& error) {
    const bool isColor = reading.content != Content::Depths;
    Framebuffer::Options options;
    options.size = data.options.size;
    options.colors.clear();
    if (isColor)
        options.colors.append(data.options.colors[reading.color]);
    options.depth = isColor ? Framebuffer::Depth::None : data.options.depth;
    std::unique_ptr<Framebuffer> target = Framebuffer::create(options, error);
    if (!target)
        return nullptr;
    const ScopedRenderState state; // the scissor test limits copies
    const ScopedFramebufferBinding source(GL_READ_FRAMEBUFFER, name);
    const ScopedFramebufferBinding binding(GL_DRAW_FRAMEBUFFER, target->name());
    if (isColor)
        data.copyColorInto(reading.color, FramebufferAccess::data(*target), 0);
    else
        data.copyDepths();
    return target;
}

bool read(Data& data, Reading reading, const Rows& rows, QString& error) {
    GLuint name = data.nameInCurrentContext();
    if (name == 0) {
        error = unknownFramebufferError();
        return false;
    }
    std::unique_ptr<Framebuffer> target;
    if (data.samples > 0) {
        target = resolved(data, name, reading, error);
        if (!target)
            return false;
        name = target->name();
        reading.color = 0;
    }
    readPixels(name, data.options.size.height(), reading, rows);
    return true;
}

QRect areaOf(const Data& data, const QRect& area) {
    return area.isNull() ? QRect(QPoint(0, 0), data.options.size) : area;
}

// Reads pixels of `channels` elements each.
template<typename Element>
QVector<Element> readElements(Data& data, const Reading& reading, Rows rows, int channels, QString& error) {
    const qint64 count = qint64(reading.area.width()) * reading.area.height() * channels;
    if (count > std::numeric_limits<int>::max() / qint64(sizeof(Element))) {
        error = QStringLiteral("There is no memory for %1 values").arg(count);
        return {};
    }
    QVector<Element> elements(static_cast<int>(count));
    rows.first = reinterpret_cast<char*>(elements.data());
    rows.pixelBytes = channels * int(sizeof(Element));
    rows.stride = reading.area.width();
    return read(data, reading, rows, error) ? elements : QVector<Element>();
}

template<typename Element>
QVector<Element> readColor(Data& data, Content content, int color, const QRect& area, GLenum type,
                           QString& error) {
    const Reading reading{content, color, areaOf(data, area)};
    const QString cause = fault(data, reading);
    if (!cause.isNull()) {
        error = cause;
        return {};
    }
    const ColorFormat& format = data.format(color);
    Rows rows;
    rows.format = format.transferFormat();
    rows.type = type;
    return readElements<Element>(data, reading, rows, format.channels, error);
}

// Reads four bytes for each pixel into an image at `topLeft`.
bool readBytes(Data& data, const Reading& reading, QImage& image, QPoint topLeft, QString& error) {
    const QString cause = fault(data, reading);
    if (!cause.isNull()) {
        error = cause;
        return false;
    }
    Rows rows;
    rows.stride = image.bytesPerLine() / rows.pixelBytes;
    rows.first =
        reinterpret_cast<char*>(image.scanLine(topLeft.y())) + std::ptrdiff_t(topLeft.x()) * rows.pixelBytes;
    return read(data, reading, rows, error);
}

} // namespace

QImage Framebuffer::toImage(QString& error, int color, const QRect& area) const {
    const Reading reading{Content::Floats, color, areaOf(*_data, area)};
    const QString cause = fault(*_data, reading);
    if (!cause.isNull()) {
        error = cause;
        return {};
    }
    QImage image(reading.area.size(), QImage::Format_RGBA8888);
    if (image.isNull())
        error = QStringLiteral("There is no memory for the image");
    else if (!readBytes(*_data, reading, image, {0, 0}, error))
        image = QImage();
    return image;
}

bool Framebuffer::readInto(QImage& image, QPoint topLeft, QString& error, int color) const {
    if (image.format() != QImage::Format_RGBA8888 || !image.rect().contains(QRect(topLeft, size()))) {
        error = QStringLiteral("The image is not of Format_RGBA8888, or too small");
        return false;
    }
    return readBytes(*_data, {Content::Floats, color, areaOf(*_data, {})}, image, topLeft, error);
}

QVector<float> Framebuffer::readFloats(QString& error, int color, const QRect& area) const {
    return readColor<float>(*_data, Content::Floats, color, area, GL_FLOAT, error);
}

QVector<qint32> Framebuffer::readIntegers(QString& error, int color, const QRect& area) const {
    return readColor<qint32>(*_data, Content::Integers, color, area, GL_INT, error);
}

QVector<quint32> Framebuffer::readUnsignedIntegers(QString& error, int color, const QRect& area) const {
    return readColor<quint32>(*_data, Content::UnsignedIntegers, color, area, GL_UNSIGNED_INT, error);
}

QVector<float> Framebuffer::readDepths(QString& error, const QRect& area) const {
    const Reading reading{Content::Depths, 0, areaOf(*_data, area)};
    const QString cause = fault(*_data, reading);
    if (!cause.isNull()) {
        error = cause;
        return {};
    }
    Rows rows;
    rows.format = GL_DEPTH_COMPONENT;
    rows.type = GL_FLOAT;
    return readElements<float>(*_data, reading, rows, 1, error);
}

} // namespace Atelier::Vel
