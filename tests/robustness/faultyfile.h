#pragma once

#include <cstddef>
#include <functional>

#include <QtCore/QString>

namespace Atelier::Vel::Testing {

/// While it lives, this process reads one file with difficulties. Only one may live at a time.
class FileFault {
public:
    /// What happens to a read at `offset` of up to `bytes` bytes: how many it may take, or a negative error
    /// number with which it fails.
    using Answer = std::function<long(long offset, std::size_t bytes)>;

    FileFault(const QString& path, Answer answer);
    ~FileFault();
    FileFault(const FileFault&) = delete;
    FileFault& operator=(const FileFault&) = delete;

    /// Reads of the file since construction.
    static std::size_t reads();
};

} // namespace Atelier::Vel::Testing
