#include <velgl/glentrypoints.h>
#include <velgl/texture.h>
#include <velgl/texturemanager.h>

#include <map>

#include "callrecord.h"

namespace Atelier::Vel {

using Testing::CallRecord;
using Testing::hexadecimal;
using Testing::listed;
using Testing::recordCall;

struct Texture::Data {
    unsigned int target = 0;
};

Texture::Texture(unsigned int target, int internalFormat, int width, int height, int depth, QObject* parent)
    : QObject(parent), _data(std::make_unique<Data>()) {
    _data->target = target;
    CallRecord& record = CallRecord::instance();
    record.add(QStringLiteral("new %1, target %2, format %3, %4 x %5 x %6, %7")
                   .arg(record.number(this, QStringLiteral("texture")), hexadecimal(target),
                        hexadecimal(unsigned(internalFormat)))
                   .arg(width)
                   .arg(height)
                   .arg(depth)
                   .arg(parent ? QStringLiteral("with a parent") : QStringLiteral("without parent")));
}

Texture::~Texture() {
    CallRecord::instance().forget(this);
}

unsigned int Texture::target() const {
    recordCall(this, QStringLiteral("target"));
    return _data->target;
}

void Texture::setReadOnly() {
    recordCall(this, QStringLiteral("setReadOnly"));
}

bool Texture::bind() {
    recordCall(this, QStringLiteral("bind"));
    return CallRecord::instance().succeeds;
}

void Texture::unbind() {
    recordCall(this, QStringLiteral("unbind"));
}

// VelModel passes colour textures on without dereferencing the pointer, so the address of a number suffices.
struct TextureManager::Data {
    std::map<QRgb, quint64> colors;
};

TextureManager::TextureManager() : _data(std::make_unique<Data>()) {}

TextureManager& TextureManager::Instance() {
    static auto* const manager = new TextureManager;
    return *manager;
}

Texture* TextureManager::colorTexture(const QColor& color) {
    CallRecord& record = CallRecord::instance();
    const QString name = color.name(QColor::HexArgb);
    auto* const texture = reinterpret_cast<Texture*>(&_data->colors[color.rgba()]);
    record.add(QStringLiteral("colorTexture ") + name);
    record.setName(texture, QStringLiteral("texture of ") + name);
    return texture;
}

TextureToken::TextureToken() {
    static quint64 lastValue = 0;
    _value = ++lastValue;
    CallRecord::instance().add(QStringLiteral("new token %1").arg(_value));
}

namespace {

void pixelStorei(unsigned int name, int value) {
    CallRecord::instance().add(QStringLiteral("pixelStorei %1, %2").arg(hexadecimal(name)).arg(value));
}

void texParameteri(unsigned int target, unsigned int name, int value) {
    CallRecord::instance().add(
        QStringLiteral("texParameteri %1, %2, %3")
            .arg(hexadecimal(target), hexadecimal(name), hexadecimal(unsigned(value))));
}

// For a few pixels of 32 bits.
void texImage2D(unsigned int target, int level, int internalFormat, int width, int height, int border,
                unsigned int format, unsigned int type, const void* pixels) {
    CallRecord::instance().add(
        QStringLiteral("texImage2D %1, %2, %3, %4 x %5, %6, %7, %8, %9")
            .arg(hexadecimal(target))
            .arg(level)
            .arg(hexadecimal(unsigned(internalFormat)))
            .arg(width)
            .arg(height)
            .arg(border)
            .arg(hexadecimal(format), hexadecimal(type),
                 listed(static_cast<const unsigned char*>(pixels), width * height * 4)));
}

void generateMipmap(unsigned int target) {
    CallRecord::instance().add(QStringLiteral("generateMipmap ") + hexadecimal(target));
}

void getIntegerv(unsigned int name, int* values) {
    constexpr int kLargestSide = 16384;
    *values = kLargestSide;
    CallRecord::instance().add(QStringLiteral("getIntegerv ") + hexadecimal(name));
}

} // namespace

GLEntryPoints& glEntryPoints() {
    static GLEntryPoints entryPoints = {pixelStorei, texParameteri, texImage2D, generateMipmap, getIntegerv};
    return entryPoints;
}

} // namespace Atelier::Vel
