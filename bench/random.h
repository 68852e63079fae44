#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace Atelier::Vel::Bench {

/// A small generator with the same sequence on every machine (SplitMix64).
class Random {
public:
    explicit Random(std::uint64_t seed) : _state(seed) {}

    std::uint64_t next() {
        _state += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = _state;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31);
    }
    /// A number from `low` to `high`, inclusive.
    std::int64_t between(std::int64_t low, std::int64_t high) {
        return low + std::int64_t(next() % std::uint64_t(high - low + 1));
    }
    template<typename T>
    void shuffle(std::vector<T>& items) {
        for (std::size_t left = items.size(); left > 1; --left)
            std::swap(items[left - 1], items[next() % left]);
    }

private:
    std::uint64_t _state;
};

} // namespace Atelier::Vel::Bench
