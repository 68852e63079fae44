#pragma once

#include <unistd.h>

namespace Atelier::Vel::Testing {

/// Ends the process if its lifetime exceeds the given time: detects hangs.
class HangGuard {
public:
    explicit HangGuard(unsigned int seconds) { alarm(seconds); }
    ~HangGuard() { alarm(0); }
    HangGuard(const HangGuard&) = delete;
    HangGuard& operator=(const HangGuard&) = delete;
};

} // namespace Atelier::Vel::Testing
