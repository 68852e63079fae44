#pragma once

#include <fstream>

#include <sys/resource.h>
#include <unistd.h>

#include <QtCore/QtGlobal>

namespace Atelier::Vel::Testing {

/// The address space of this process, in bytes.
inline quint64 addressesTaken() {
    quint64 pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<quint64>(getpagesize());
}

/// Limits the further address space of this process to a number of bytes. For child processes only, and not
/// under a sanitizer, which needs the addresses for itself.
inline void leaveAddresses(quint64 bytes) {
    const quint64 limit = addressesTaken() + bytes;
    const rlimit limits = {limit, limit};
    setrlimit(RLIMIT_AS, &limits);
}

} // namespace Atelier::Vel::Testing
