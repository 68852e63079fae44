// Included before every source of a build with planted faults; see scripts/mutate.
#pragma once

#include <cstdlib>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace mutation {

inline constexpr unsigned int kFaults = 4096;

/// The faults to check: the one that is switched on, or all while the reached ones are recorded.
inline unsigned char watched[kFaults];
inline unsigned char* reached = nullptr;

inline bool isWatchedOn(unsigned int fault) {
    if (reached == nullptr)
        return true;
    reached[fault] = 1;
    return false;
}

/// Whether a fault is switched on.
inline bool live(unsigned int fault) {
    return __builtin_expect(watched[fault], 0) != 0 && isWatchedOn(fault);
}

/// The same in constant expressions. A fault is never on at compile time.
constexpr bool on(unsigned int fault) {
    return __builtin_is_constant_evaluated() ? false : live(fault);
}

/// Reads the environment once for each library and program, before their static objects are initialised.
__attribute__((constructor(101), used)) static void readEnvironment() {
    if (const char* const fault = std::getenv("VELMODEL_FAULT"))
        watched[std::strtoul(fault, nullptr, 10) % kFaults] = 1;
    const char* const file = std::getenv("VELMODEL_REACHED_FAULTS");
    const int descriptor = file != nullptr && reached == nullptr ? open(file, O_RDWR | O_CLOEXEC) : -1;
    if (descriptor < 0)
        return;
    void* const shared = mmap(nullptr, kFaults, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    close(descriptor);
    if (shared == MAP_FAILED)
        return;
    reached = static_cast<unsigned char*>(shared);
    for (unsigned char& fault : watched)
        fault = 1;
}

} // namespace mutation
