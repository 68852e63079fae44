#include <epoxy/gl.h>

#include <velgl/glentrypoints.h>

#include "context/currentcontext.h"
#include "state/pixelstore.h"

namespace Atelier::Vel {

namespace {

void pixelStorei(unsigned int name, int value) {
    if (findCurrentContext())
        glPixelStorei(name, value);
}

void texParameteri(unsigned int target, unsigned int name, int value) {
    if (findCurrentContext())
        glTexParameteri(target, name, value);
}

// `pixels` points to plain rows in memory: the client's row length, skips and unpack buffer are set aside.
void texImage2D(unsigned int target, int level, int internalFormat, int width, int height, int border,
                unsigned int format, unsigned int type, const void* pixels) {
    if (!findCurrentContext())
        return;
    const ScopedPixelStore store(ScopedPixelStore::Direction::Unpack, ScopedPixelStore::Alignment::Client);
    glTexImage2D(target, level, internalFormat, width, height, border, format, type, pixels);
}

// Whether there was no memory for the image. glGenerateMipmap() is an error then.
bool lacksImage(unsigned int target) {
    GLint width = 1;
    if (target == GL_TEXTURE_2D)
        glGetTexLevelParameteriv(target, 0, GL_TEXTURE_WIDTH, &width);
    return width == 0;
}

void generateMipmap(unsigned int target) {
    if (findCurrentContext() && !lacksImage(target))
        glGenerateMipmap(target);
}

void getIntegerv(unsigned int name, int* values) {
    if (findCurrentContext())
        glGetIntegerv(name, values);
}

} // namespace

GLEntryPoints& glEntryPoints() {
    static GLEntryPoints entryPoints = {pixelStorei, texParameteri, texImage2D, generateMipmap, getIntegerv};
    return entryPoints;
}

} // namespace Atelier::Vel
