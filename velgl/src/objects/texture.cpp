#include "state/scopedbinding.h"

#include <velgl/texture.h>

#include <atomic>
#include <mutex>

#include "context/currentcontext.h"
#include "context/log.h"
#include "objects/glnames.h"
#include "objects/objectrecord.h"
#include "objects/textureaccess.h"
#include "state/bindingstack.h"
#include "state/pixelstore.h"

namespace Atelier::Vel {

struct Texture::Data {
    unsigned int target = 0;
    int internalFormat = 0;
    int width = 0;
    int height = 0;
    int depth = 0;
    bool isReadOnly = false;
    std::atomic<bool> wasMade{false};           // in any group
    std::atomic<bool> isForeignReported{false}; // reported once, since a texture is bound in each frame
    Refill refill;
    std::mutex mutex; // for `names`
    GLNames names;
    ObjectRecord record{"Texture", GL_TEXTURE};
    BindingStack bindings;

    GLuint find(const GLNameSpace& group);
    GLuint nameIn(const ContextGL& gl, Texture& texture);
    GLuint make(const ContextGL& gl, Texture& texture);
    void fill(GLuint name, const GLNameSpace& group, Texture& texture);
    bool canBeMade();
};

namespace {

std::atomic<quint64> lastRevision{1};

// Requires: the texture is bound to GL_TEXTURE_2D, and the rows in memory are plain.
void fillWithColor(const QColor& color) {
    const GLubyte texel[] = {static_cast<GLubyte>(color.red()), static_cast<GLubyte>(color.green()),
                             static_cast<GLubyte>(color.blue()), static_cast<GLubyte>(color.alpha())};
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texel);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
}

// Whether a texture can have the level. OpenGL reports an error for a query of any other level.
bool isLevel(int level) {
    GLint largestSide = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largestSide);
    return level >= 0 && level < 31 && (largestSide >> level) > 0;
}

} // namespace

GLuint Texture::Data::find(const GLNameSpace& group) {
    const std::lock_guard lock(mutex);
    const GLName* name = names.find(group);
    return name ? name->value() : 0;
}

// A texture that can be filled again is made in every group of contexts. Other content exists in one group
// only; after that group is gone its owner can fill the texture again, unless it has declared it final.
bool Texture::Data::canBeMade() {
    const std::lock_guard lock(mutex);
    return refill || (!names.isAwake() && !isReadOnly);
}

GLuint Texture::Data::nameIn(const ContextGL& gl, Texture& texture) {
    if (const GLuint name = find(*gl.group()))
        return name;
    if (canBeMade())
        return make(gl, texture);
    if (wasMade && !isForeignReported.exchange(true))
        record.warnOfForeignContext();
    return 0;
}

// Two threads whose contexts share may both make a texture. The first one is used.
GLuint Texture::Data::make(const ContextGL& gl, Texture& texture) {
    GLName owned(GLKind::Texture, gl.group());
    GLuint name = 0;
    glGenTextures(1, &name);
    owned.set(name);
    if (name == 0) {
        record.failed("made");
        return 0;
    }
    const ScopedTextureBinding binding(target,
                                       name); // a generated name becomes a texture with its first bind
    record.applyLabel(name);
    {
        const std::lock_guard lock(mutex);
        names.add(std::move(owned));
    }
    wasMade = true;
    ++lastRevision;
    if (refill)
        fill(name, *gl.group(), texture);
    return find(*gl.group());
}

// Requires: the texture is bound.
void Texture::Data::fill(GLuint name, const GLNameSpace& group, Texture& texture) {
    const ScopedPixelStore store(ScopedPixelStore::Direction::Unpack);
    bool isFilled = false;
    try {
        const ContextScope::Pause pause;
        const Refill function = refill; // it may be replaced while it runs
        isFilled = function(texture);
    } catch (...) {
        const std::lock_guard lock(mutex);
        names.remove(group);
        ++lastRevision;
        throw;
    }
    glBindTexture(target, name); // the function may have bound another one
    if (isFilled && !lacksImage(target))
        return;
    if (isFilled)
        record.failed("filled");
    else
        qCWarning(velglLog, "Texture '%s' could not be filled again in another context; it is white there",
                  qPrintable(record.label()));
    if (target == GL_TEXTURE_2D)
        fillWithColor(Qt::white);
}

quint64 TextureAccess::revision() {
    return lastRevision;
}

unsigned int TextureAccess::nameIn(const ContextGL& gl, Texture& texture) {
    return textureBindingQuery(texture.target()) != 0 ? texture._data->nameIn(gl, texture) : 0;
}

bool lacksImage(unsigned int target) {
    GLint width = 1;
    if (target == GL_TEXTURE_2D)
        glGetTexLevelParameteriv(target, 0, GL_TEXTURE_WIDTH, &width);
    return width == 0;
}

Texture::Texture(unsigned int target, int internalFormat, int width, int height, int depth, QObject* parent)
    : QObject(parent), _data(std::make_unique<Data>()) {
    _data->target = target;
    _data->internalFormat = internalFormat;
    _data->width = width;
    _data->height = height;
    _data->depth = depth;
}

Texture::~Texture() {
    ++lastRevision;
}

std::unique_ptr<Texture> Texture::ofColor(const QColor& color) {
    auto texture = std::make_unique<Texture>(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr);
    texture->setRefill([rgb = color.toRgb()](Texture&) {
        fillWithColor(rgb);
        return true;
    });
    texture->_data->record.setLabel(color.name(QColor::HexArgb));
    texture->setReadOnly();
    return texture;
}

unsigned int Texture::target() const {
    return _data->target;
}

int Texture::internalFormat() const {
    return _data->internalFormat;
}

int Texture::width() const {
    return _data->width;
}

int Texture::height() const {
    return _data->height;
}

int Texture::depth() const {
    return _data->depth;
}

void Texture::setReadOnly() {
    _data->isReadOnly = true;
}

// Draws find the names of their textures again: this one may not have had one.
void Texture::setRefill(Refill refill) {
    _data->refill = std::move(refill);
    ++lastRevision;
}

bool Texture::isReadOnly() const {
    return _data->isReadOnly;
}

bool Texture::bind() {
    const ContextGL* gl = enterCurrentContext();
    const GLuint name = gl ? TextureAccess::nameIn(*gl, *this) : 0;
    if (name == 0) {
        _data->bindings.push({});
        return false;
    }
    const GLuint previous = currentName(textureBindingQuery(_data->target));
    _data->bindings.push({gl->serial(), previous, currentName(GL_ACTIVE_TEXTURE) - GL_TEXTURE0});
    glBindTexture(_data->target, name);
    return true;
}

void Texture::unbind() {
    const SavedBinding binding = _data->bindings.pop();
    const ContextGL* gl = findKnownContext();
    if (!gl || gl->serial() != binding.context)
        return;
    const ScopedTextureUnit unit(binding.place);
    rebindTexture(_data->target, binding.previous);
}

unsigned int Texture::name() const {
    const ContextGL* gl = enterCurrentContext();
    return gl ? _data->find(*gl->group()) : 0;
}

QString Texture::label() const {
    return _data->record.label();
}

void Texture::setLabel(const QString& label) {
    _data->record.setLabel(label);
    if (const unsigned int current = name())
        _data->record.applyLabel(current);
}

bool Texture::hasContent() const {
    const GLuint texture = name();
    if (texture == 0 || _data->target != GL_TEXTURE_2D)
        return false;
    const ScopedTextureBinding binding(GL_TEXTURE_2D, texture);
    return !lacksImage(GL_TEXTURE_2D);
}

QImage Texture::readBack(int level) const {
    const GLuint texture = name();
    if (texture == 0 || _data->target != GL_TEXTURE_2D || !isLevel(level))
        return {};
    const ScopedTextureBinding binding(GL_TEXTURE_2D, texture);
    GLint width = 0;
    GLint height = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, level, GL_TEXTURE_WIDTH, &width);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, level, GL_TEXTURE_HEIGHT, &height);
    QImage image(width, height, QImage::Format_RGBA8888);
    if (!image.isNull()) {
        const ScopedPixelStore store(ScopedPixelStore::Direction::Pack);
        glGetTexImage(GL_TEXTURE_2D, level, GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    }
    return image;
}

} // namespace Atelier::Vel
