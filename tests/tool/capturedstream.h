#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QTemporaryFile>

namespace Atelier::Vel::Testing {

/// Captures what this process writes to a standard stream during its lifetime.
class CapturedStream {
public:
    /// `descriptor` is STDOUT_FILENO or STDERR_FILENO.
    explicit CapturedStream(int descriptor);
    ~CapturedStream();
    CapturedStream(const CapturedStream&) = delete;
    CapturedStream& operator=(const CapturedStream&) = delete;

    /// Everything written so far.
    QByteArray text();

private:
    int _descriptor;
    int _original;
    QTemporaryFile _file;
};

} // namespace Atelier::Vel::Testing
