#include "files/textinput.h"

#include <algorithm>
#include <utility>

#include <QtCore/QFile>
#include <QtCore/QFileDevice>

namespace Atelier::Vel {

namespace {

bool isFile(const QIODevice& device) {
    return qobject_cast<const QFileDevice*>(&device) != nullptr && !device.isSequential();
}

} // namespace

std::unique_ptr<TextInput> TextInput::open(ModelSource& source, const QString& name) {
    std::unique_ptr<QIODevice> device = source.open(name);
    return device && device->isReadable() ? std::make_unique<TextInput>(std::move(device)) : nullptr;
}

TextInput::TextInput(std::unique_ptr<QIODevice> device) : _device(std::move(device)) {
    if (isFile(*_device))
        _device->setTextModeEnabled(true);
    else
        _reader.emplace(*_device);
}

qint64 TextInput::size() const {
    return _device->isSequential() ? -1 : std::max<qint64>(_device->size(), 0);
}

qint64 TextInput::sequentialBytes() const {
    return _device->isSequential() ? _reader->bytesRead() : 0;
}

std::optional<FileVersion> TextInput::version() const {
    const auto* file = qobject_cast<const QFile*>(_device.get());
    return file != nullptr ? versionOf(*file) : std::nullopt;
}

bool TextInput::rewind() {
    return !_device->isSequential() && device().seek(0);
}

bool TextInput::isReadToTheEnd() const {
    const auto* file = qobject_cast<const QFileDevice*>(_device.get());
    return !(_reader && _reader->hasFailed()) && (file == nullptr || file->error() == QFileDevice::NoError);
}

} // namespace Atelier::Vel
