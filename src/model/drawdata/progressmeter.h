#pragma once

#include <velmodel/loadprogress.h>

#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// Thrown if a progress callback cancels.
struct Cancelled {};

/// Reports the progress of work, phase by phase, and limits the number of reports per phase.
class ProgressMeter {
public:
    /// `progress` may be empty.
    explicit ProgressMeter(LoadProgress progress);
    // Not copyable, because meters hold a pointer to this object.
    ProgressMeter(const ProgressMeter&) = delete;
    ProgressMeter& operator=(const ProgressMeter&) = delete;

    /// Begins a phase whose work is `total` units, or unknown if negative, and reports its start. Phases
    /// without work are not reported.
    void begin(LoadPhase phase, qint64 total);
    /// The units of work in the phase.
    qint64 total() const { return _step.total; }
    /// Records that `done` units of the phase are done. Throws Cancelled if the progress callback cancels.
    void reach(qint64 done);
    /// Calls the progress function with the last step once more, so that it can cancel work that belongs to
    /// no phase. Throws Cancelled if it does.
    void poll();
    /// A meter for the next `share` units of the phase. The meter may count other units, `units` in total; it
    /// reports the proportional part of `share`. Empty if there is no progress callback.
    WorkMeter meter(qint64 share, qint64 units);
    WorkMeter meter(qint64 share) { return meter(share, share); }

private:
    LoadProgress _progress;
    LoadStep _step;
    qint64 _interval = 0; ///< in units
    qint64 _nextReport = 0;
    qint64 _allotted = 0; ///< units for which meters were made
};

} // namespace Atelier::Vel
