#pragma once

#include <cstddef>
#include <cstdint>

#include <QtCore/QFile>

namespace Atelier::Vel::Fuzzing {

/// A regular file in memory. It has a path during its lifetime.
class MemoryFile {
public:
    MemoryFile();
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    /// Replaces the content.
    void write(const void* bytes, std::size_t count);
    QString path() const;
    /// Opens `file` on it in text mode, as the library opens text. Faster than opening the path.
    void openText(QFile& file) const;

private:
    int _descriptor;
};

} // namespace Atelier::Vel::Fuzzing
