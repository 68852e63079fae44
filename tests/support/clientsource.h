#pragma once

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <utility>

#include <QtCore/QIODevice>
#include <QtCore/QMap>
#include <QtCore/QStringList>

#include <gtest/gtest.h>

#include <velmodel/modelsource.h>

namespace Atelier::Vel::Testing {

/// How a device of a client works.
struct DeviceBehaviour {
    bool isSequential = false;
    qint64 mostPerRead = std::numeric_limits<qint64>::max();
    /// A sequential device has no data at every second read until it is waited for.
    bool mustBeWaitedFor = false;
    qint64 claimedBytes = -2;   ///< a wrong size, unless -2
    qint64 failsAt = -1;        ///< the position where a read returns -1
    bool endsWithError = false; ///< a read at the end returns -1
    std::function<void(qint64 position)> beforeRead = [](qint64) {};
    QIODevice::OpenMode mode = QIODevice::ReadOnly | QIODevice::Unbuffered;
};

/// A device over bytes in memory. A sequential one fails the test if it is asked to seek.
class ClientDevice : public QIODevice {
public:
    ClientDevice(QByteArray bytes, DeviceBehaviour behaviour, qint64* bytesRead = nullptr)
        : _bytes(std::move(bytes)), _behaviour(std::move(behaviour)), _bytesRead(bytesRead) {
        open(_behaviour.mode);
    }

    bool isSequential() const override { return _behaviour.isSequential; }
    qint64 size() const override {
        EXPECT_FALSE(isSequential()) << "a sequential device has no size";
        return _behaviour.claimedBytes == -2 ? _bytes.size() : _behaviour.claimedBytes;
    }
    bool seek(qint64 position) override {
        EXPECT_FALSE(isSequential()) << "a sequential device cannot seek";
        _position = position;
        return QIODevice::seek(position);
    }
    bool waitForReadyRead(int) override { return std::exchange(_isEmpty, false) && !isAtEnd(); }

protected:
    qint64 readData(char* bytes, qint64 most) override {
        _behaviour.beforeRead(_position);
        if (_behaviour.failsAt == _position || (isAtEnd() && _behaviour.endsWithError))
            return -1;
        if (_behaviour.mustBeWaitedFor && !_wasEmpty) {
            _wasEmpty = _isEmpty = true;
            return 0;
        }
        if (_isEmpty)
            return 0;
        _wasEmpty = false;
        const qint64 end = _behaviour.failsAt > _position ? _behaviour.failsAt : _bytes.size();
        const qint64 count = std::min({most, _behaviour.mostPerRead, end - _position});
        std::memcpy(bytes, _bytes.constData() + _position, static_cast<size_t>(count));
        _position += count;
        if (_bytesRead != nullptr)
            *_bytesRead += count;
        return count;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    bool isAtEnd() const { return _position == _bytes.size(); }

    QByteArray _bytes;
    DeviceBehaviour _behaviour;
    qint64* _bytesRead;
    qint64 _position = 0;
    bool _wasEmpty = false;
    bool _isEmpty = false;
};

/// A source of files in memory. A file names others relative to its own folder, if it has one.
class ClientSource : public ModelSource {
public:
    explicit ClientSource(QMap<QString, QByteArray> all = {}) : files(std::move(all)) {}

    std::unique_ptr<QIODevice> open(const QString& name) override {
        opened.append(name);
        if (!files.contains(name))
            return nullptr;
        return std::make_unique<ClientDevice>(files.value(name), behaviour, &bytesRead);
    }
    QString resolve(const QString& base, const QString& name) override {
        const int folderEnd = base.lastIndexOf('/');
        return folderEnd < 0 ? name : base.left(folderEnd + 1) + name;
    }

    QMap<QString, QByteArray> files;
    DeviceBehaviour behaviour;
    QStringList opened;
    qint64 bytesRead = 0;
};

} // namespace Atelier::Vel::Testing
