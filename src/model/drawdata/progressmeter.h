#pragma once

#include <velmodel/loadprogress.h>

#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// Thrown where a progress function cancels.
struct Cancelled {};

/// Reports the progress of some work, phase by phase, and not too often.
class ProgressMeter {
public:
    /// `progress` may be empty.
    explicit ProgressMeter(LoadProgress progress);
    // Meters refer to it.
    ProgressMeter(const ProgressMeter&) = delete;
    ProgressMeter& operator=(const ProgressMeter&) = delete;

    /// Begins a phase whose work is `total` units, and reports that. Phases without work are not reported.
    void begin(LoadPhase phase, qint64 total);
    /// Units of the phase.
    qint64 total() const { return _step.total; }
    /// `done` units of the phase are done. Throws Cancelled when the progress function cancels.
    void reach(qint64 done);
    /// A meter for the next `share` units of the phase. It may be called for other units, `units` in all, and
    /// reports what is in proportion to them. Empty without a progress function.
    WorkMeter meter(qint64 share, qint64 units);
    WorkMeter meter(qint64 share) { return meter(share, share); }

private:
    LoadProgress _progress;
    LoadStep _step;
    qint64 _interval = 0; ///< of units
    qint64 _nextReport = 0;
    qint64 _allotted = 0; ///< units that meters were made for
};

} // namespace Atelier::Vel
