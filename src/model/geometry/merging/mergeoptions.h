#pragma once

#include "geometry/merging/mergepolicy.h"
#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// Options of merging. None of them changes the result.
struct MergeOptions {
    /// The initial value of every hash. It should be random: otherwise a file could be designed whose corners
    /// all have the same hash.
    quint64 hashSeed = 0;
    /// Counts corners as they are merged, some of them twice. May be empty; an exception from it cancels the
    /// merging.
    WorkMeter meter;
    MergePolicy policy;
};

} // namespace Atelier::Vel
