#include "drawdata/progressmeter.h"

#include <algorithm>
#include <utility>

namespace Atelier::Vel {

namespace {

// This is enough for a smooth progress bar, and drawing the bar costs little compared with loading a large
// file.
constexpr qint64 kReportsPerPhase = 200;
// The interval if the work is not known.
constexpr qint64 kUnitsPerReport = qint64(1) << 20;

} // namespace

ProgressMeter::ProgressMeter(LoadProgress progress) : _progress(std::move(progress)) {}

void ProgressMeter::begin(LoadPhase phase, qint64 total) {
    _step = {phase, 0, total};
    _interval = total < 0 ? kUnitsPerReport : total / kReportsPerPhase + 1;
    _nextReport = 0;
    _allotted = 0;
    reach(0);
}

void ProgressMeter::reach(qint64 done) {
    if (!_progress || done < _nextReport || _step.total == 0)
        return;
    _nextReport = done + _interval;
    _step.done = done;
    if (!_progress(_step))
        throw Cancelled();
}

void ProgressMeter::poll() {
    if (_progress && _step.total != 0 && !_progress(_step))
        throw Cancelled();
}

WorkMeter ProgressMeter::meter(qint64 share, qint64 units) {
    const qint64 before = std::exchange(_allotted, _allotted + share);
    if (!_progress)
        return {};
    qint64 counted = 0;
    return [this, before, share, units, counted](int more) mutable {
        counted = std::min(counted + more, units);
        reach(before + static_cast<qint64>(static_cast<double>(share) * static_cast<double>(counted) /
                                           static_cast<double>(units)));
    };
}

} // namespace Atelier::Vel
