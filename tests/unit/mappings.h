#pragma once

#include <cstddef>
#include <vector>

namespace Atelier::Vel::Testing {

/// While it lives, it sees the mappings of this process, chooses where they lie, and can refuse them. Only
/// one may live at a time.
class Mappings {
public:
    struct Range {
        const char* begin = nullptr;
        std::size_t bytes = 0;

        friend bool operator==(const Range& a, const Range& b) {
            return a.begin == b.begin && a.bytes == b.bytes;
        }
    };

    /// Mappings begin `offset` bytes behind a multiple of 2 MiB.
    explicit Mappings(std::size_t offset = 0);
    ~Mappings();
    Mappings(const Mappings&) = delete;
    Mappings& operator=(const Mappings&) = delete;

    /// Those made since construction and not given back.
    static const std::vector<Range>& live();
    /// Whether all that was given back was a whole mapping.
    static bool wereGivenBackWhole();
    /// What large pages were asked for.
    static const std::vector<Range>& advised();
    /// Refuses the next `count` mappings.
    static void refuse(int count);
};

} // namespace Atelier::Vel::Testing
