#pragma once

#include <memory>
#include <optional>

#include <QtCore/QIODevice>
#include <QtCore/QString>

#include <velmodel/modelsource.h>

#include "files/fileversion.h"
#include "files/sourcedevice.h"

namespace Atelier::Vel {

/// An open text of a source.
class TextInput {
public:
    /// Opens a file of `source`. Returns: null if there is none or it cannot be read.
    static std::unique_ptr<TextInput> open(ModelSource& source, const QString& name);

    /// Requires: `device` is open for reading.
    explicit TextInput(std::unique_ptr<QIODevice> device);

    /// The device to read from, in text mode.
    QIODevice& device() { return _reader ? *_reader : *_device; }
    /// The size in bytes; -1 for a sequential device.
    qint64 size() const;
    /// The number of bytes of a sequential device that were read; 0 for others.
    qint64 sequentialBytes() const;
    /// The version of a file on a disk; nothing for other devices.
    std::optional<FileVersion> version() const;
    /// Goes back to the start. Returns: false for a sequential device, which is read once.
    bool rewind();
    /// Whether reading reached the end. A text stream treats an error as the end.
    bool isReadToTheEnd() const;

private:
    std::unique_ptr<QIODevice> _device;
    std::optional<SourceDevice> _reader; ///< absent for a file, which is read directly
};

} // namespace Atelier::Vel
