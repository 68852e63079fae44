#pragma once

#include <cstddef>

namespace Atelier::Vel::Testing {

/// Denies memory to VelGL: `operator new` throws std::bad_alloc when the library itself calls it on the
/// thread that made this object. For programs that compile newfaults.cpp; at most one object lives at a time.
class NewFaults {
public:
    /// Denies all requests.
    NewFaults();
    /// Denies one request: the first one if `number` is 0.
    explicit NewFaults(std::size_t number);
    ~NewFaults();
    NewFaults(const NewFaults&) = delete;
    NewFaults& operator=(const NewFaults&) = delete;

    /// Returns: how many requests were denied.
    static std::size_t deniedCount();
};

} // namespace Atelier::Vel::Testing
