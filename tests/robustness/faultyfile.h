#pragma once

#include <cstddef>
#include <functional>

#include <QtCore/QString>

namespace Atelier::Vel::Testing {

/// Makes reads of one file by this process fail or fall short during its lifetime. Only one may exist at a
/// time.
class FileFault {
public:
    /// The result of a read at `offset` of up to `bytes` bytes: the maximum number of bytes to read, or a
    /// negative error number.
    using Answer = std::function<long(long offset, std::size_t bytes)>;

    FileFault(const QString& path, Answer answer);
    ~FileFault();
    FileFault(const FileFault&) = delete;
    FileFault& operator=(const FileFault&) = delete;

    /// Reads of the file since construction.
    static std::size_t reads();
};

} // namespace Atelier::Vel::Testing
