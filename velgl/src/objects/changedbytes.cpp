#include "objects/changedbytes.h"

#include <algorithm>

namespace Atelier::Vel {

void ChangedBytes::add(const ByteRange& range) {
    _ranges.push_back(range);
    if (_ranges.size() < _joinAt)
        return;
    join(0);
    _joinAt = std::max(_joinAt, 2 * _ranges.size());
}

const std::vector<ByteRange>& ChangedBytes::joined() {
    join(0);
    if (_ranges.size() > kMaxSeparate)
        join(kMaxGap);
    return _ranges;
}

void ChangedBytes::join(qint64 maxGap) {
    std::sort(_ranges.begin(), _ranges.end(),
              [](const ByteRange& a, const ByteRange& b) { return a.begin < b.begin; });
    std::size_t count = 0;
    for (const ByteRange& range : _ranges) {
        if (count > 0 && range.begin - _ranges[count - 1].end <= maxGap)
            _ranges[count - 1].end = std::max(_ranges[count - 1].end, range.end);
        else
            _ranges[count++] = range;
    }
    _ranges.resize(count);
}

} // namespace Atelier::Vel
