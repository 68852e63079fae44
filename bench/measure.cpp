#include "measure.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Atelier::Vel::Bench {

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double processorMilliseconds(const rusage& usage) {
    const auto milliseconds = [](const timeval& time) {
        return double(time.tv_sec) * 1000.0 + double(time.tv_usec) / 1000.0;
    };
    return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

rusage usageNow() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage;
}

/// A size from /proc/self/status, in bytes.
std::uint64_t statusBytes(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::uint64_t kibibytes = 0;
        if (word == field + ":" && status >> kibibytes)
            return kibibytes * 1024;
    }
    return 0;
}

/// One load and its times, without its peak of memory.
struct Timed {
    std::unique_ptr<Loaded> loaded;
    double milliseconds;
    double processorMilliseconds;
};

Timed timedLoad(Contestant& contestant, const QString& path) {
    const rusage before = usageNow();
    const auto start = Clock::now();
    auto loaded = contestant.load(path);
    const double milliseconds = millisecondsSince(start);
    const rusage after = usageNow();
    return {std::move(loaded), milliseconds, processorMilliseconds(after) - processorMilliseconds(before)};
}

std::optional<Sample> measureHere(Contestant& contestant, const QString& path, int loads) {
    contestant.prepare();
    Sample sample;
    {
        const std::uint64_t before = statusBytes("VmRSS");
        const Timed first = timedLoad(contestant, path);
        const std::uint64_t peak = statusBytes("VmHWM");
        if (!first.loaded)
            return {};
        sample.peakBytes = peak > before ? peak - before : 0;
        sample.firstMilliseconds = first.milliseconds;
        sample.vertices = first.loaded->vertices;
        sample.triangles = first.loaded->triangles;
        sample.checksum = first.loaded->checksum;
    }
    std::vector<double> times;
    std::vector<double> processorTimes;
    for (int load = 1; load < loads; ++load) {
        const Timed later = timedLoad(contestant, path);
        times.push_back(later.milliseconds);
        processorTimes.push_back(later.processorMilliseconds);
    }
    sample.milliseconds = spreadOf(times).median;
    sample.processorMilliseconds = spreadOf(processorTimes).median;
    return sample;
}

} // namespace

bool runInChild(const std::function<void(void*)>& work, void* result, std::size_t resultSize) {
    int ends[2];
    if (pipe(ends) != 0)
        return false;
    const pid_t child = fork();
    if (child == 0) {
        std::vector<char> answer(resultSize);
        work(answer.data());
        _exit(write(ends[1], answer.data(), resultSize) == ssize_t(resultSize) ? 0 : 1);
    }
    close(ends[1]);
    const bool arrived = child > 0 && read(ends[0], result, resultSize) == ssize_t(resultSize);
    close(ends[0]);
    if (child > 0)
        waitpid(child, nullptr, 0);
    return arrived;
}

std::optional<Sample> measureInChild(Contestant& contestant, const QString& path, int loads) {
    struct Answer {
        Sample sample;
        bool isLoaded;
    } answer{};
    const auto load = [&](void* result) {
        const auto sample = measureHere(contestant, path, loads);
        new (result) Answer{sample.value_or(Sample{}), sample.has_value()};
    };
    if (!runInChild(load, &answer, sizeof answer) || !answer.isLoaded)
        return {};
    return answer.sample;
}

Spread spreadOf(std::vector<double> figures) {
    if (figures.empty())
        return {};
    std::sort(figures.begin(), figures.end());
    return {figures.front(), figures[figures.size() / 2], figures.back()};
}

} // namespace Atelier::Vel::Bench
