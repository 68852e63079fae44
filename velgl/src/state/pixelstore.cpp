#include "state/scopedbinding.h"

#include "state/pixelstore.h"

namespace Atelier::Vel {

namespace {

struct Setting {
    GLenum pack;
    GLenum unpack;
    GLint plain;
};

constexpr Setting kSettings[] = {
    {GL_PACK_ALIGNMENT, GL_UNPACK_ALIGNMENT, 4},       {GL_PACK_ROW_LENGTH, GL_UNPACK_ROW_LENGTH, 0},
    {GL_PACK_IMAGE_HEIGHT, GL_UNPACK_IMAGE_HEIGHT, 0}, {GL_PACK_SKIP_ROWS, GL_UNPACK_SKIP_ROWS, 0},
    {GL_PACK_SKIP_PIXELS, GL_UNPACK_SKIP_PIXELS, 0},   {GL_PACK_SKIP_IMAGES, GL_UNPACK_SKIP_IMAGES, 0},
    {GL_PACK_SWAP_BYTES, GL_UNPACK_SWAP_BYTES, 0},     {GL_PACK_LSB_FIRST, GL_UNPACK_LSB_FIRST, 0},
};

GLenum settingName(ScopedPixelStore::Direction direction, int index) {
    return direction == ScopedPixelStore::Direction::Pack ? kSettings[index].pack : kSettings[index].unpack;
}

GLenum bufferTarget(ScopedPixelStore::Direction direction) {
    return direction == ScopedPixelStore::Direction::Pack ? GL_PIXEL_PACK_BUFFER : GL_PIXEL_UNPACK_BUFFER;
}

} // namespace

ScopedPixelStore::ScopedPixelStore(Direction direction, Alignment alignment)
    : _direction(direction), _buffer(currentName(bufferBindingQuery(bufferTarget(direction)))) {
    static_assert(sizeof kSettings / sizeof *kSettings == kSettingCount);
    for (int i = 0; i < kSettingCount; ++i) {
        glGetIntegerv(settingName(_direction, i), &_settings[i]);
        const bool isAlignment = i == 0;
        if (!isAlignment || alignment == Alignment::Plain)
            glPixelStorei(settingName(_direction, i), kSettings[i].plain);
    }
    glBindBuffer(bufferTarget(_direction), 0);
}

ScopedPixelStore::~ScopedPixelStore() {
    for (int i = 0; i < kSettingCount; ++i)
        glPixelStorei(settingName(_direction, i), _settings[i]);
    rebindBuffer(bufferTarget(_direction), _buffer);
}

} // namespace Atelier::Vel
