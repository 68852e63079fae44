#pragma once

#include <cstdio>
#include <cstdlib>

namespace Atelier::Vel::Fuzzing {

/// Ends the process if a claim is false, so that the fuzzer keeps the input.
inline void require(bool holds, const char* claim) {
    if (holds)
        return;
    std::fprintf(stderr, "This does not hold: %s\n", claim);
    std::abort();
}

} // namespace Atelier::Vel::Fuzzing
