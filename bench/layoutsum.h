#pragma once

#include "checksum.h"

namespace Atelier::Vel::Bench {

/// The checksums that must be the same for a load and the reference.
template<typename Index>
std::uint64_t indexChecksum(const Index* indices, int count) {
    Checksum sum;
    sum.add(std::uint64_t(sizeof(Index)));
    sum.add(indices, std::size_t(count) * sizeof(Index));
    return sum.value();
}

inline std::uint64_t streamChecksum(const void* data, std::size_t bytes) {
    Checksum sum;
    sum.add(data, bytes);
    return sum.value();
}

inline std::uint64_t layoutChecksum(std::uint64_t content, int components, unsigned int type) {
    Checksum sum;
    sum.add(content);
    sum.add(std::uint64_t(components));
    sum.add(std::uint64_t(type));
    return sum.value();
}

} // namespace Atelier::Vel::Bench
