#pragma once

#include <QtCore/QIODevice>

namespace Atelier::Vel {

/// Reads a device of a client to its true end: it waits for the data of sequential devices, repeats short
/// reads, and detects errors. All reads are full, except at the end. Never asks a sequential device to seek.
class SourceDevice : public QIODevice {
public:
    /// `device` must outlive this object, and be open for reading.
    explicit SourceDevice(QIODevice& device);

    bool isSequential() const override { return _device.isSequential(); }
    qint64 size() const override { return _device.size(); }
    bool seek(qint64 position) override;
    /// Whether a read has reached the end. The size is not asked, as it may be wrong.
    bool atEnd() const override { return _isAtEnd; }

    bool hasFailed() const { return _hasFailed; }
    /// The number of bytes read, those that were read again after a seek included.
    qint64 bytesRead() const { return _bytesRead; }

protected:
    qint64 readData(char* bytes, qint64 count) override;
    qint64 writeData(const char* bytes, qint64 count) override;

private:
    bool waitForData(int emptyReads);

    QIODevice& _device;
    qint64 _bytesRead = 0;
    bool _isAtEnd = false;
    bool _hasFailed = false;
};

} // namespace Atelier::Vel
