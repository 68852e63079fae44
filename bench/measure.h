#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include <QtCore/QString>

#include "contestants.h"

namespace Atelier::Vel::Bench {

/// Several loads in one process. The first one also gets memory from the system; the later ones are compared.
struct Sample {
    double firstMilliseconds = 0;     ///< wall time of the first load
    double milliseconds = 0;          ///< wall time, the median of the loads after the first
    double processorMilliseconds = 0; ///< processor time, user and system, likewise
    std::uint64_t peakBytes = 0;      ///< by how much the first load raised the peak of resident memory
    std::uint64_t vertices = 0;
    std::uint64_t triangles = 0;
    std::uint64_t checksum = 0;
};

/// Loads `path` `loads` times in a fresh child process, so that every contestant starts from the same memory.
/// Starting and ending the process is not measured. Returns: none if a load failed or the process died.
std::optional<Sample> measureInChild(Contestant& contestant, const QString& path, int loads);

/// Runs `work` in a child process, so that this process keeps no memory of it. Copies the `bytes` bytes that
/// `work` writes to its argument to `result`. Returns: false if the child died before that.
bool runInChild(const std::function<void(void*)>& work, void* result, std::size_t bytes);

/// The spread of a list of numbers.
struct Spread {
    double minimum = 0;
    double median = 0;
    double maximum = 0;
};
Spread spreadOf(std::vector<double> figures);

} // namespace Atelier::Vel::Bench
