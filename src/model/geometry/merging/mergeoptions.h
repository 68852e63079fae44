#pragma once

#include "geometry/merging/mergepolicy.h"
#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// How corners are merged. Nothing in it changes the result.
struct MergeOptions {
    /// Where every hash begins. A random number, so that no file can be made whose corners all hash alike.
    quint64 hashSeed = 0;
    /// Counts corners as they are merged, some of them twice. May be empty; an exception from it cancels the
    /// merging.
    WorkMeter meter;
    MergePolicy policy;
};

} // namespace Atelier::Vel
