#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include <QtCore/QString>

#include "contestants.h"

namespace Atelier::Vel::Bench {

/// Some loads of one process. The first finds its memory; those that follow are what is compared.
struct Sample {
    double firstMilliseconds = 0;     ///< wall time of the first load
    double milliseconds = 0;          ///< wall time, the median of the loads after the first
    double processorMilliseconds = 0; ///< the processor's time, user and system, likewise
    std::uint64_t peakBytes = 0;      ///< by how much the first load raised the peak of resident memory
    std::uint64_t vertices = 0;
    std::uint64_t triangles = 0;
    std::uint64_t checksum = 0;
};

/// Loads `path` `loads` times in a fresh child process, so that every contestant starts from the same memory.
/// Starting and ending the process is not measured. Returns: nothing when a load failed or the process died.
std::optional<Sample> measureInChild(Contestant& contestant, const QString& path, int loads);

/// Runs `work` in a child process, which leaves no memory behind in this one, and copies the `bytes` bytes
/// that it wrote to its argument to `result`. Returns: false when the child died before that.
bool runInChild(const std::function<void(void*)>& work, void* result, std::size_t bytes);

/// Spread of a list of figures.
struct Spread {
    double minimum = 0;
    double median = 0;
    double maximum = 0;
};
Spread spreadOf(std::vector<double> figures);

} // namespace Atelier::Vel::Bench
