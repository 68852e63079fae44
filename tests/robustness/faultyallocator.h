#pragma once

#include <cstddef>

namespace Atelier::Vel::Testing {

/// What an AllocationFault makes fail.
enum class FaultKind {
    One, ///< one request, as when a large block does not fit
    All  ///< a request and all behind it, as when memory is used up
};

/// While it lives, this process is denied memory from the request numbered `first` on, the next one being 0.
/// In the way of all heap memory, Qt's strings and arrays included, and of mappings. Only one may live at a
/// time. Where a sanitizer wants the heap for itself, in the way of `operator new` and of mappings.
class AllocationFault {
public:
    AllocationFault(std::size_t first, FaultKind kind);
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;

    /// Requests since construction, the denied ones included.
    static std::size_t requests();
    /// Those that were to be denied and were not: code of Qt made them that crashes without memory.
    static std::size_t granted();
    /// Mappings among the denied ones: whoever keeps memory to use it again may give that back and try once
    /// more.
    static std::size_t deniedMappings();
};

/// Blocks of memory and mappings that are taken and not given back.
std::size_t blocksInUse();

} // namespace Atelier::Vel::Testing
