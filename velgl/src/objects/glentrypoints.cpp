#include <epoxy/gl.h>

#include <velgl/glentrypoints.h>

#include "context/currentcontext.h"
#include "objects/textureaccess.h"
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

// Without an image, glGenerateMipmap() is an error.
void generateMipmap(unsigned int target) {
    if (findCurrentContext() && !lacksImage(target))
        glGenerateMipmap(target);
}

void getIntegerv(unsigned int name, int* values) {
    if (findCurrentContext())
        glGetIntegerv(name, values);
}

const unsigned char* getStringi(unsigned int name, unsigned int index) {
    return findCurrentContext() ? glGetStringi(name, index) : nullptr;
}

} // namespace

GLEntryPoints& glEntryPoints() {
    static GLEntryPoints entryPoints = {pixelStorei,    texParameteri, texImage2D,
                                        generateMipmap, getIntegerv,   getStringi};
    return entryPoints;
}

} // namespace Atelier::Vel
