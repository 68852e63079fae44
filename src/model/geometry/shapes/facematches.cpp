#include "geometry/shapes/facematches.h"

#include <algorithm>

#include "geometry/merging/hash.h"

namespace Atelier::Vel {

namespace {

constexpr quint32 kListedCorners = 4;
constexpr quint32 kNoCorner = 0xFFFFFFFF;
constexpr std::size_t kFirstBuckets = 1024;

/// The corners of a face from a given one on, in one of the two directions.
class Walk {
public:
    Walk(const quint32* corners, quint32 count, quint32 start, bool isReversed)
        : _corners(corners), _count(count), _start(start), _isReversed(isReversed) {}

    quint32 operator[](quint32 i) const {
        const quint32 at = _isReversed ? _start + _count - i : _start + i;
        return _corners[at >= _count ? at - _count : at];
    }

private:
    const quint32* _corners;
    quint32 _count;
    quint32 _start;
    bool _isReversed;
};

} // namespace

FaceMatches::Key FaceMatches::keyOf(const quint32* corners, quint32 count, bool& isReversed) {
    const auto start = static_cast<quint32>(std::min_element(corners, corners + count) - corners);
    isReversed = Walk(corners, count, start, true)[1] < Walk(corners, count, start, false)[1];
    const Walk walk(corners, count, start, isReversed);
    Key key = {{kNoCorner, kNoCorner, kNoCorner, kNoCorner}, count};
    if (count <= kListedCorners) {
        for (quint32 i = 0; i < count; ++i)
            key.words[i] = walk[i];
        return key;
    }
    quint64 low = 0;
    quint64 high = kGoldenRatio;
    for (quint32 i = 0; i < count; ++i) {
        low = mixWords(low, walk[i], i);
        high = mixWords(high, i, walk[i]);
    }
    key.words[0] = walk[0];
    key.words[1] = static_cast<quint32>(low);
    key.words[2] = static_cast<quint32>(low >> 32);
    key.words[3] = static_cast<quint32>(high);
    return key;
}

// Neighbouring faces have similar corners, and their buckets are near to each other.
std::size_t FaceMatches::bucketOf(const Key& key) const {
    constexpr quint32 kSpread = 7919;
    const quint32 differences = key.words[1] - key.words[0] + (key.words[2] - key.words[0]) * 3;
    return (key.words[0] + differences * kSpread) & (_buckets.size() - 1);
}

void FaceMatches::growBuckets() {
    _buckets.assign(std::max(kFirstBuckets, 2 * _buckets.size()), 0);
    for (std::size_t i = 0; i < _entries.size(); ++i) {
        quint32& bucket = _buckets[bucketOf(_entries[i].key)];
        _entries[i].next = bucket;
        bucket = static_cast<quint32>(i + 1);
    }
}

FaceMatches::Result FaceMatches::add(const quint32* corners, quint32 count, quint32 tag) {
    if (_entries.size() == kMaxFaces) {
        ++_skipped;
        return {};
    }
    if (_entries.size() == _buckets.size())
        growBuckets();
    bool isReversed = false;
    const Key key = keyOf(corners, count, isReversed);
    quint32& bucket = _buckets[bucketOf(key)];
    int candidates = 0;
    for (quint32 number = bucket; number != 0; number = _entries[number - 1].next) {
        const Entry& entry = _entries[number - 1];
        if (entry.key == key)
            return {entry.isReversed == isReversed ? Match::Same : Match::Opposite, entry.tag};
        if (++candidates == kMaxCandidates) {
            ++_skipped;
            break;
        }
    }
    _entries.push_back({key, bucket, tag, isReversed});
    bucket = static_cast<quint32>(_entries.size());
    return {};
}

} // namespace Atelier::Vel
