#pragma once

#include <cstddef>
#include <vector>

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

/// Bytes of a buffer from `begin` up to, but not including, `end`.
struct ByteRange {
    qint64 begin = 0;
    qint64 end = 0;
};

/// The parts of a buffer whose content is to be uploaded again. Keeps its memory for the next changes.
class ChangedBytes {
public:
    bool isEmpty() const { return _ranges.empty(); }
    void clear() { _ranges.clear(); }
    /// Returns: the number of ranges that are held, joined or not.
    std::size_t size() const { return _ranges.size(); }
    /// Requires: `range` is not empty.
    /// Cost: constant on average, however often the same bytes change.
    void add(const ByteRange& range);
    /// Returns: the ranges in ascending order. Those that touch are joined. Of more than kMaxSeparate, those
    /// with at most kMaxGap bytes between them are joined as well.
    const std::vector<ByteRange>& joined();

    static constexpr std::size_t kMaxSeparate = 16;
    /// A call costs a driver about as much as copying this many bytes.
    static constexpr qint64 kMaxGap = 256;

private:
    void join(qint64 maxGap);

    std::vector<ByteRange> _ranges;
    std::size_t _joinAt = 4 * kMaxSeparate; ///< the number of ranges at which add() joins them
};

} // namespace Atelier::Vel
