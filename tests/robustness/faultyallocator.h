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
/// time. Code of Qt that crashes without memory gets what it requests. Where a sanitizer wants the heap for
/// itself, in the way of `operator new` and of mappings.
class AllocationFault {
public:
    AllocationFault(std::size_t first, FaultKind kind);
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;

    /// Requests since construction, the denied ones included.
    static std::size_t requests();
};

/// The blocks of memory and the pages of mappings that are taken and not given back.
std::size_t memoryInUse();

} // namespace Atelier::Vel::Testing
