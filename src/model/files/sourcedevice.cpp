#include "files/sourcedevice.h"

namespace Atelier::Vel {

namespace {

// A device that announces data more often without having any is at its end.
constexpr int kMaxEmptyReads = 1000;

} // namespace

SourceDevice::SourceDevice(QIODevice& device) : _device(device) {
    _device.setTextModeEnabled(false);
    // The device has its own buffer.
    open(ReadOnly | Text | Unbuffered);
}

bool SourceDevice::seek(qint64 position) {
    _isAtEnd = false;
    return QIODevice::seek(position) && _device.seek(position);
}

qint64 SourceDevice::readData(char* bytes, qint64 count) {
    qint64 done = 0;
    int emptyReads = 0;
    while (done < count && !_isAtEnd) {
        const qint64 read = _device.read(bytes + done, count - done);
        if (read > 0) {
            done += read;
            emptyReads = 0;
        } else if (read < 0 || !waitForData(++emptyReads)) {
            _isAtEnd = true;
            _hasFailed = read < 0 && !isSequential() && _device.pos() < _device.size();
        }
    }
    _bytesRead += done;
    return done;
}

// Some devices announce their last data and the end at the same time.
bool SourceDevice::waitForData(int emptyReads) {
    constexpr int kForEver = -1;
    return isSequential() && emptyReads <= kMaxEmptyReads &&
           (_device.waitForReadyRead(kForEver) || _device.bytesAvailable() > 0);
}

qint64 SourceDevice::writeData(const char* /*bytes*/, qint64 /*count*/) {
    return -1;
}

} // namespace Atelier::Vel
