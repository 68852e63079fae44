#pragma once

#include <unistd.h>

namespace Atelier::Vel::Testing {

/// Ends the process when what happens in its life takes long enough to be called a hang.
class HangGuard {
public:
    explicit HangGuard(unsigned int seconds) { alarm(seconds); }
    ~HangGuard() { alarm(0); }
    HangGuard(const HangGuard&) = delete;
    HangGuard& operator=(const HangGuard&) = delete;
};

} // namespace Atelier::Vel::Testing
