#pragma once

#include <fstream>

#include <sys/resource.h>
#include <unistd.h>

#include <QtCore/QtGlobal>

namespace Atelier::Vel::Testing {

/// The bytes of addresses that this process has taken.
inline quint64 addressesTaken() {
    quint64 pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<quint64>(getpagesize());
}

/// From now on, this process gets addresses for so many more bytes. For child processes, and not under a
/// sanitizer, which needs the addresses for itself.
inline void leaveAddresses(quint64 bytes) {
    const quint64 limit = addressesTaken() + bytes;
    const rlimit limits = {limit, limit};
    setrlimit(RLIMIT_AS, &limits);
}

} // namespace Atelier::Vel::Testing
