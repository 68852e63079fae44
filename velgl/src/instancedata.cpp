#include <velgl/instancedata.h>

#include <limits>

#include "log.h"

namespace Atelier::Vel {

InstanceData::InstanceData(const QString& name) : _name(name) {}

void InstanceData::set(const QString& member, const void* data, unsigned long long size) {
    constexpr unsigned long long kLargestValue = std::numeric_limits<int>::max() / 2;
    if (size > kLargestValue || (size > 0 && !data)) {
        qCWarning(velglLog, "Value '%s' of '%s' is refused: %llu bytes at %p", qPrintable(member),
                  qPrintable(_name), size, data);
        return;
    }
    _values.insert(member, QByteArray(static_cast<const char*>(data), static_cast<int>(size)));
}

void InstanceData::setTexture(const QString& member, const QString& path) {
    _textures.insert(member, {path, nullptr});
}

void InstanceData::setTexture(const QString& member, Texture* texture) {
    _textures.insert(member, {QString(), texture});
}

void InstanceData::clear() {
    _values.clear();
    _textures.clear();
}

} // namespace Atelier::Vel
