#include "memoryfile.h"

#include <sys/mman.h>
#include <unistd.h>

#include "claim.h"

namespace Atelier::Vel::Fuzzing {

MemoryFile::MemoryFile() : _descriptor(memfd_create("input", MFD_CLOEXEC)) {
    require(_descriptor >= 0, "there is room for a file in memory");
}

MemoryFile::~MemoryFile() {
    close(_descriptor);
}

void MemoryFile::write(const void* bytes, std::size_t count) {
    const bool isWritten =
        ftruncate(_descriptor, 0) == 0 && pwrite(_descriptor, bytes, count, 0) == static_cast<ssize_t>(count);
    require(isWritten, "a file in memory takes its bytes");
}

QString MemoryFile::path() const {
    return QStringLiteral("/proc/self/fd/%1").arg(_descriptor);
}

void MemoryFile::openText(QFile& file) const {
    lseek(_descriptor, 0, SEEK_SET);
    require(file.open(_descriptor, QIODevice::ReadOnly | QIODevice::Text), "a file in memory opens");
}

} // namespace Atelier::Vel::Fuzzing
