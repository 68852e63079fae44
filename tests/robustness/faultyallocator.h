#pragma once

#include <cstddef>

namespace Atelier::Vel::Testing {

/// Which requests an AllocationFault denies.
enum class FaultKind {
    One, ///< one request, as if a large block does not fit
    All  ///< a request and all later ones, as if memory is exhausted
};

/// Denies memory to this process during its lifetime, from the request numbered `first` on; the next request
/// has number 0. Covers all heap memory, including Qt's strings and arrays, and mappings; under a sanitizer,
/// only `operator new` and mappings. Qt functions that crash without memory always get it. Only one
/// AllocationFault may exist at a time.
class AllocationFault {
public:
    AllocationFault(std::size_t first, FaultKind kind);
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;

    /// Requests since construction, including denied ones.
    static std::size_t requests();
};

/// The number of allocated memory blocks and mapped pages that are not released.
std::size_t memoryInUse();

} // namespace Atelier::Vel::Testing
