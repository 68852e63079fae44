#pragma once

#include <vector>

#include <fcntl.h>

namespace Atelier::Vel::Testing {

/// The descriptors that this process has open, in order.
inline std::vector<int> openDescriptors() {
    constexpr int kLimit = 1024; // far more than a test opens
    std::vector<int> descriptors;
    for (int descriptor = 0; descriptor < kLimit; ++descriptor)
        if (fcntl(descriptor, F_GETFD) != -1)
            descriptors.push_back(descriptor);
    return descriptors;
}

} // namespace Atelier::Vel::Testing
