#include <velgl/instancedata.h>

#include <limits>

#include <velgl/texture.h>

#include "context/log.h"

namespace Atelier::Vel {

InstanceData::InstanceData(const QString& name) {
    if (!name.isNull())
        ownContent().name = name;
}

const InstanceData::Content& InstanceData::content() const {
    static const Content nothing;
    return _content ? *_content : nothing;
}

InstanceData::Content& InstanceData::ownContent() {
    if (!_content)
        _content = new Content;
    return *_content;
}

void InstanceData::set(const QString& member, const void* data, unsigned long long size) {
    constexpr unsigned long long kMaxValueSize = std::numeric_limits<int>::max() / 2;
    if (size > kMaxValueSize || (size > 0 && !data)) {
        qCWarning(velglLog, "Value '%s' of '%s' is refused: %llu bytes at %p", qPrintable(member),
                  qPrintable(name()), size, data);
        return;
    }
    ownContent().values.insert(member, QByteArray(static_cast<const char*>(data), static_cast<int>(size)));
}

void InstanceData::setTexture(const QString& member, const QString& path) {
    ownContent().textures.insert(member, {path, nullptr});
}

void InstanceData::setTexture(const QString& member, Texture* texture) {
    ownContent().textures.insert(member, {QString(), texture});
}

Texture* InstanceData::texture(const QString& member) const {
    return content().textures.value(member).object;
}

void InstanceData::clear() {
    ownContent().values.clear();
    ownContent().textures.clear();
}

} // namespace Atelier::Vel
