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

FaceMatches::Key FaceMatches::triangleKey(const quint32* corners, bool& isReversed) {
    const int start =
        corners[0] <= corners[1] ? (corners[0] <= corners[2] ? 0 : 2) : (corners[1] <= corners[2] ? 1 : 2);
    const quint32 next = corners[start == 2 ? 0 : start + 1];
    const quint32 last = corners[start == 0 ? 2 : start - 1];
    isReversed = last < next;
    return {{corners[start], std::min(next, last), std::max(next, last), kNoCorner}, 3};
}

FaceMatches::Key FaceMatches::keyOf(const quint32* corners, quint32 count, bool& isReversed) {
    if (count == 3)
        return triangleKey(corners, isReversed);
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
    return (key.words[0] + differences * kSpread) & (_bucketCount - 1);
}

void FaceMatches::growBuckets() {
    const std::size_t count = std::max(kFirstBuckets, 2 * _bucketCount);
    _buckets = std::make_unique<ScratchBlock>(count * sizeof(quint32));
    _bucketCount = count;
    for (quint32 i = 0; i < _entryCount; ++i) {
        quint32& bucket = _buckets->as<quint32>()[bucketOf(entry(i).key)];
        entry(i).next = bucket;
        bucket = i + 1;
    }
}

FaceMatches::Result FaceMatches::add(const quint32* corners, quint32 count, quint32 tag) {
    if (_entryCount == kMaxFaces) {
        ++_skipped;
        return {};
    }
    if (_entryCount == _bucketCount)
        growBuckets();
    if (_entryCount == _entries.size() * kBlockEntries)
        _entries.push_back(std::make_unique<ScratchBlock>(kBlockEntries * sizeof(Entry),
                                                          ScratchBlock::Content::Unspecified));
    bool isReversed = false;
    const Key key = keyOf(corners, count, isReversed);
    quint32& bucket = _buckets->as<quint32>()[bucketOf(key)];
    int candidates = 0;
    for (quint32 number = bucket; number != 0; number = entry(number - 1).next) {
        const Entry& other = entry(number - 1);
        if (other.key == key)
            return {other.isReversed == isReversed ? Match::Same : Match::Opposite, other.tag};
        if (++candidates == kMaxCandidates) {
            ++_skipped;
            break;
        }
    }
    entry(_entryCount) = {key, bucket, tag, isReversed};
    bucket = ++_entryCount;
    return {};
}

} // namespace Atelier::Vel
