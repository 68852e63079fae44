#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace Atelier::Vel::Testing {

constexpr std::size_t kLargePage = std::size_t{2} << 20;

struct Advice {
    std::uintptr_t begin;
    std::size_t bytes;
    int advice;
};

/// Records the calls of mmap, mremap, munmap and madvise in this program's own code during its life; advice
/// is not passed on. One may live at a time. The program is linked with --wrap for each call.
class MappingWatch {
public:
    MappingWatch();
    ~MappingWatch();
    MappingWatch(const MappingWatch&) = delete;
    MappingWatch& operator=(const MappingWatch&) = delete;

    /// The mappings that exist: their sizes by their addresses.
    const std::map<std::uintptr_t, std::size_t>& mappings() const { return _mappings; }
    std::size_t bytesMapped() const;
    /// The number of mappings made, including removed ones.
    int made() const { return _made; }
    /// The number of times that pages were moved.
    int moves() const { return _moves; }
    const std::vector<Advice>& advices() const { return _advices; }

    /// Fails the next `count` mappings.
    void fail(int count) { _failures = count; }
    /// Fails the next `count` moves of pages.
    void failMoves(int count) { _moveFailures = count; }
    /// Places mappings this number of bytes after the start of a large page.
    void placeBehindLargePages(std::size_t bytes) { _offset = bytes; }

    void* map(void* address, std::size_t bytes, int protection, int flags, int file, long offset);
    void* move(void* address, std::size_t bytes, std::size_t newBytes, int flags, void* target);
    int unmap(void* address, std::size_t bytes);
    int advise(void* address, std::size_t bytes, int advice);

    /// Null if there is none.
    static MappingWatch* current();

private:
    std::map<std::uintptr_t, std::size_t> _mappings;
    std::vector<Advice> _advices;
    int _made = 0;
    int _moves = 0;
    int _failures = 0;
    int _moveFailures = 0;
    std::size_t _offset = 4096;
};

} // namespace Atelier::Vel::Testing
