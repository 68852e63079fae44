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
    int width = 0;
    int height = 0;
};

Texture::Texture(unsigned int target, int internalFormat, int width, int height, int depth, QObject* parent)
    : QObject(parent), _data(std::make_unique<Data>()) {
    _data->target = target;
    _data->width = width;
    _data->height = height;
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

int Texture::width() const {
    recordCall(this, QStringLiteral("width"));
    return _data->width;
}

int Texture::height() const {
    recordCall(this, QStringLiteral("height"));
    return _data->height;
}

void Texture::setRefill(Refill refill) {
    recordCall(this, refill ? QStringLiteral("setRefill") : QStringLiteral("setRefill null"));
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

struct TextureManager::Data {
    std::map<QRgb, std::unique_ptr<Texture>> colors;
};

TextureManager::TextureManager() : _data(std::make_unique<Data>()) {}

TextureManager& TextureManager::Instance() {
    static auto* const manager = new TextureManager;
    return *manager;
}

Texture* TextureManager::colorTexture(const QColor& color) {
    CallRecord& record = CallRecord::instance();
    const QString name = color.name(QColor::HexArgb);
    record.add(QStringLiteral("colorTexture ") + name);
    std::unique_ptr<Texture>& texture = _data->colors[color.rgba()];
    if (!texture) {
        record.isPaused = true; // VelModel asks for a colour and does not make an object
        texture = std::make_unique<Texture>(0, 0, 1, 1, 0, nullptr);
        record.isPaused = false;
    }
    record.setName(texture.get(), QStringLiteral("texture of ") + name);
    return texture.get();
}

void TextureManager::setDefaultLoader(Loader loader) {
    CallRecord::instance().add(loader ? QStringLiteral("setDefaultLoader")
                                      : QStringLiteral("setDefaultLoader null"));
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

const unsigned char* getStringi(unsigned int name, unsigned int index) {
    CallRecord::instance().add(QStringLiteral("getStringi %1, %2").arg(hexadecimal(name)).arg(index));
    return nullptr;
}

} // namespace

GLEntryPoints& glEntryPoints() {
    static GLEntryPoints entryPoints = {pixelStorei,    texParameteri, texImage2D,
                                        generateMipmap, getIntegerv,   getStringi};
    return entryPoints;
}

} // namespace Atelier::Vel
