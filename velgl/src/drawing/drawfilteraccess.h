#pragma once

#include <memory>

#include <velgl/drawfilter.h>

namespace Atelier::Vel {

/// Gives VelGL access to the private part of a filter.
struct DrawFilterAccess {
    /// Returns: a number that only copies of the filter share; 0 for one that passes all commands.
    static quint64 serial(const DrawFilter& filter);
    /// Returns: what expires with the last copy of the filter.
    static std::weak_ptr<const void> lifetime(const DrawFilter& filter);
};

} // namespace Atelier::Vel
