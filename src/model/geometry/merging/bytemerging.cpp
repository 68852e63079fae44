#include "geometry/merging/bytemerging.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "geometry/merging/vertextable.h"
#include "memory/prefetch.h"

namespace Atelier::Vel {

namespace {

template<typename T>
T load(const unsigned char* bytes) {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

/// Mixes one value into a running hash, whole words at a time.
struct AbsorbBytes {
    quint64 bytesPerValue;

    quint64 stride() const { return bytesPerValue; }
    quint64 operator()(quint64 hash, const unsigned char* bytes) const {
        quint64 left = bytesPerValue;
        for (; left >= 16; bytes += 16, left -= 16)
            hash = mixWords(hash, load<quint64>(bytes), load<quint64>(bytes + 8));
        quint64 words[2] = {0, 0};
        std::memcpy(words, bytes, left);
        return mixWords(hash, words[0], words[1]);
    }
};

/// The same for the strides that nearly all attributes have.
template<quint64 Stride>
struct AbsorbWords {
    static constexpr quint64 stride() { return Stride; }
    quint64 operator()(quint64 hash, const unsigned char* bytes) const {
        if constexpr (Stride == 4)
            return mixWords(hash, load<quint32>(bytes), 0);
        else if constexpr (Stride == 8)
            return mixWords(hash, load<quint64>(bytes), 0);
        else if constexpr (Stride == 12)
            return mixWords(hash, load<quint64>(bytes), load<quint32>(bytes + 8));
        else
            return mixWords(hash, load<quint64>(bytes), load<quint64>(bytes + 8));
    }
};

inline bool equalBytes(const unsigned char* a, const unsigned char* b, quint64 count) {
    switch (count) {
    case 12:
        return load<quint64>(a) == load<quint64>(b) && load<quint32>(a + 8) == load<quint32>(b + 8);
    case 8:
        return load<quint64>(a) == load<quint64>(b);
    default:
        return std::memcmp(a, b, count) == 0;
    }
}

// Beyond this, slot numbers would not fit 32 bits.
constexpr quint32 kMaxFilteredCorners = 1U << 29;

/// Calls `work` with what absorbs values of the given stride.
template<typename Work>
void withStride(quint64 stride, const Work& work) {
    switch (stride) {
    case 4:
        return work(AbsorbWords<4>());
    case 8:
        return work(AbsorbWords<8>());
    case 12:
        return work(AbsorbWords<12>());
    case 16:
        return work(AbsorbWords<16>());
    default:
        return work(AbsorbBytes{stride});
    }
}

/// Corners as keys of a VertexTable: the bytes of their values.
class ByteKeys {
public:
    explicit ByteKeys(const std::vector<CornerAttribute>& attributes) {
        quint64 longest = 0;
        for (const CornerAttribute& attribute : attributes) {
            // Without a value, or without bytes, all corners are alike in this attribute.
            if (attribute.valueCount == 0 || attribute.stride == 0)
                continue;
            _attributes.push_back(attribute);
            longest = std::max(longest, attribute.stride);
            _bytes = std::min(_bytes, kTooWide) + std::min(attribute.stride, kTooWide);
        }
        _zeros.resize(longest);
    }

    /// Words of a key; 0 when keys would be too wide to be copied.
    quint32 words() const { return _bytes < kTooWide ? static_cast<quint32>((_bytes + 7) / 8) : 0; }

    /// Writes the hashes and, if keys are copied, the keys of `count` corners; what a key leaves of its last
    /// word stays as it is.
    void read(quint32 first, quint32 count, quint64* hashes, quint64* keys) const {
        std::fill_n(hashes, count, hashSeed());
        const quint64 step = words() * sizeof(quint64);
        auto* place = reinterpret_cast<unsigned char*>(keys);
        for (const CornerAttribute& attribute : _attributes) {
            withStride(attribute.stride, [&](auto absorb) {
                forCorners(attribute, absorb.stride(), first, count,
                           [&](quint32 i, const unsigned char* bytes) {
                               hashes[i] = absorb(hashes[i], bytes);
                               if (step != 0)
                                   std::memcpy(place + i * step, bytes, absorb.stride());
                           });
            });
            if (step != 0)
                place += attribute.stride;
        }
        std::transform(hashes, hashes + count, hashes, finishedHash);
    }

    bool equal(quint32 a, quint32 b) const {
        return std::all_of(_attributes.begin(), _attributes.end(), [&](const CornerAttribute& attribute) {
            const quint64 stride = attribute.stride;
            return equalBytes(bytesOf(attribute, a, stride), bytesOf(attribute, b, stride), stride);
        });
    }

    void prefetchIndices(quint32 corner) const {
        for (const CornerAttribute& attribute : _attributes)
            attribute.prefetchIndex(corner);
    }

    void prefetchValues(quint32 corner) const {
        for (const CornerAttribute& attribute : _attributes)
            prefetch(bytesOf(attribute, corner, attribute.stride));
    }

private:
    static constexpr quint64 kTooWide = 129;
    static constexpr quint64 kAhead = 1024; // bytes

    /// Calls `take` with the bytes of the value of each of `count` corners from `first` on, the first of
    /// which is number 0.
    template<typename Take>
    void forCorners(const CornerAttribute& attribute, quint64 stride, quint32 first, quint32 count,
                    const Take& take) const {
        if (!isRun(attribute, first, count)) {
            for (quint32 i = 0; i < count; ++i)
                take(i, bytesOf(attribute, first + i, stride));
            return;
        }
        const quint64 value = attribute.indices[first];
        const unsigned char* const bytes = attribute.values + value * stride;
        const quint64 ahead = std::min(kAhead, (attribute.valueCount - value - count) * stride);
        for (quint32 i = 0; i < count; ++i) {
            prefetch(bytes + i * stride + ahead);
            take(i, bytes + i * stride);
        }
    }

    /// Whether corners use one value after the other, as those of a mesh without shared ones do.
    static bool isRun(const CornerAttribute& attribute, quint32 first, quint32 count) {
        if (attribute.indices == nullptr || attribute.indexStep != 1 ||
            attribute.indexCount < quint64{first} + count)
            return false;
        const quint32* const indices = attribute.indices + first;
        quint32 difference = 0;
        for (quint32 i = 0; i < count; ++i)
            difference |= indices[i] ^ (indices[0] + i);
        return difference == 0 && quint64{indices[0]} + count <= attribute.valueCount;
    }

    const unsigned char* bytesOf(const CornerAttribute& attribute, quint32 corner, quint64 stride) const {
        const quint64 value = attribute.valueOf(corner);
        return value == attribute.valueCount ? _zeros.data() : attribute.values + value * stride;
    }

    std::vector<CornerAttribute> _attributes;
    std::vector<unsigned char> _zeros;
    quint64 _bytes = 0; ///< of the values of a corner, up to kTooWide and more
};

/// Slots of two bits that say whether none, one or several corners hash to them.
class DuplicateFilter {
public:
    explicit DuplicateFilter(quint32 cornerCount)
        : _slotCount(kSlotsPerCorner * quint64{cornerCount} + 1),
          _words((_slotCount / kSlotsPerWord + 1) * sizeof(quint64)) {}

    /// Asks memory for a slot.
    void fetch(quint32 slot) const { prefetch(_words.as<quint64>() + slot / kSlotsPerWord); }
    quint32 slotOf(quint64 hash) const { return static_cast<quint32>((hash >> 32) * _slotCount >> 32); }
    void count(quint32 slot) {
        quint64& word = _words.as<quint64>()[slot / kSlotsPerWord];
        const quint32 shift = slot % kSlotsPerWord * 2;
        word |= ((word >> shift & 1) << 1 | 1) << shift;
    }
    bool isShared(quint32 slot) const {
        return (_words.as<quint64>()[slot / kSlotsPerWord] >> (slot % kSlotsPerWord * 2) & 2) != 0;
    }

private:
    static constexpr quint64 kSlotsPerCorner = 7;
    static constexpr quint32 kSlotsPerWord = 32;

    quint64 _slotCount;
    ScratchBlock _words;
};

/// Calls `take` with the bytes of the value of each of `count` corners, in their order. Those of a mesh in no
/// order lie anywhere: some at a time are asked for before they are needed.
template<typename CornerAt, typename Take>
void forValues(const CornerAttribute& attribute, quint64 stride, quint32 count, const CornerAt& cornerAt,
               const WorkMeter& meter, const Take& take) {
    constexpr quint32 kCornersPerReport = 1 << 15;                        // about a millisecond
    const std::vector<unsigned char> zeros(std::max<quint64>(stride, 1)); // a place even for no bytes
    std::array<const unsigned char*, 64> values;
    for (quint32 first = 0; first < count;) {
        const quint32 end = first + std::min<quint32>(values.size(), count - first);
        for (quint32 i = first; i < end; ++i) {
            const quint64 value = attribute.valueOf(cornerAt(i));
            values[i - first] =
                value == attribute.valueCount ? zeros.data() : attribute.values + value * stride;
            prefetch(values[i - first]);
        }
        for (const unsigned char* const* value = values.data(); first < end; ++first, ++value)
            take(first, *value);
        if (first % kCornersPerReport == 0 && meter)
            meter(kCornersPerReport);
    }
}

/// Those of `count` corners whose value in one attribute may have the same bytes as that of another of them,
/// in their order; all corners that have such a value are among them. `cornerAt` gives the corners. `found`
/// has room for an entry per corner. Returns: how many were found.
template<typename CornerAt>
quint32 findCandidates(const CornerAttribute& attribute, quint32 count, const CornerAt& cornerAt,
                       quint64 seed, quint32* found, const WorkMeter& meter) {
    DuplicateFilter filter(count);
    // Slots lie anywhere, and those of a large mesh in no cache: they are asked for before they are needed.
    constexpr quint32 kAhead = 32;
    withStride(attribute.stride, [&](auto absorb) {
        forValues(attribute, absorb.stride(), count, cornerAt, meter,
                  [&](quint32 i, const unsigned char* bytes) {
                      found[i] = filter.slotOf(finishedHash(absorb(seed, bytes)));
                      filter.fetch(found[i]);
                      if (i >= kAhead)
                          filter.count(found[i - kAhead]);
                  });
    });
    for (quint32 i = count - std::min(count, kAhead); i < count; ++i)
        filter.count(found[i]);
    // Their slots make room for them, without a branch that nobody could foretell.
    quint32 foundCount = 0;
    for (quint32 i = 0; i < count; ++i) {
        filter.fetch(found[std::min(i + kAhead, count - 1)]);
        const bool isCandidate = filter.isShared(found[i]);
        found[foundCount] = cornerAt(i);
        foundCount += isCandidate ? 1 : 0;
    }
    return foundCount;
}

/// The same of all corners. One in eight that has no equal falls into a slot with another one; sieved again
/// with another seed, one in sixty is left.
std::vector<quint32> duplicateCandidates(const CornerAttribute& attribute, quint32 cornerCount,
                                         quint32* found, const WorkMeter& meter) {
    const auto itself = [](quint32 corner) { return corner; };
    const quint32 foundFirst = findCandidates(attribute, cornerCount, itself, hashSeed(), found, meter);
    const std::vector<quint32> first(found, found + foundFirst);
    const auto firstAt = [&first](quint32 i) { return first[i]; };
    const quint32 foundAgain = findCandidates(attribute, foundFirst, firstAt, ~hashSeed(), found, {});
    return std::vector<quint32>(found, found + foundAgain);
}

/// The attributes as the given corners use them, one after the other; `numbers` takes their index lists.
std::vector<CornerAttribute> attributesOf(const std::vector<CornerAttribute>& attributes,
                                          const std::vector<quint32>& corners,
                                          std::vector<quint32>& numbers) {
    std::vector<CornerAttribute> result = attributes;
    numbers.resize(attributes.size() * corners.size());
    for (std::size_t i = 0; i < result.size(); ++i) {
        quint32* const list = numbers.data() + i * corners.size();
        std::transform(corners.begin(), corners.end(), list,
                       [&](quint32 corner) { return static_cast<quint32>(attributes[i].valueOf(corner)); });
        result[i].indices = list;
        result[i].indexCount = corners.size();
        result[i].indexStep = 1;
    }
    return result;
}

} // namespace

quint32 mergeMostlyDistinct(const std::vector<CornerAttribute>& attributes, quint32 cornerCount,
                            quint32* vertexOfCorner, const std::function<quint32*()>& firstCorners,
                            const WorkMeter& meter) {
    const auto key = std::max_element(
        attributes.begin(), attributes.end(),
        [](const CornerAttribute& a, const CornerAttribute& b) { return a.valueCount < b.valueCount; });
    if (key == attributes.end() || key->valueCount == 0 || key->stride == 0 ||
        cornerCount > kMaxFilteredCorners)
        return mergeByBytes(attributes, cornerCount, vertexOfCorner, firstCorners(), meter);
    const std::vector<quint32> candidates = duplicateCandidates(*key, cornerCount, vertexOfCorner, meter);
    const auto count = static_cast<quint32>(candidates.size());
    if (count > cornerCount / 4)
        return mergeByBytes(attributes, cornerCount, vertexOfCorner, firstCorners(), meter);

    std::vector<quint32> numbers;
    std::vector<quint32> group(count);
    std::vector<quint32> firstOfGroup(count);
    const quint32 groups =
        mergeByBytes(attributesOf(attributes, candidates, numbers), count, group.data(), firstOfGroup.data());
    if (groups == count)
        return cornerCount;
    quint32* const firstCorner = firstCorners();
    std::vector<quint32> vertexOfGroup(count);
    quint32 vertices = 0;
    quint32 candidate = 0;
    for (quint32 corner = 0; corner < cornerCount; ++corner) {
        const bool isCandidate = candidate < count && candidates[candidate] == corner;
        if (isCandidate && firstOfGroup[group[candidate]] != candidate) {
            vertexOfCorner[corner] = vertexOfGroup[group[candidate++]];
            continue;
        }
        if (isCandidate)
            vertexOfGroup[group[candidate++]] = vertices;
        firstCorner[vertices] = corner;
        vertexOfCorner[corner] = vertices++;
    }
    return vertices;
}

quint32 mergeByBytes(const std::vector<CornerAttribute>& attributes, quint32 cornerCount,
                     quint32* vertexOfCorner, quint32* firstCorner, const WorkMeter& meter) {
    const ByteKeys keys(attributes);
    VertexTable set(cornerCount, keys.words());
    return set.insertAll(keys, cornerCount, vertexOfCorner, firstCorner, meter);
}

void gatherValues(const CornerAttribute& attribute, const quint32* corners, quint32 count, unsigned char* out,
                  const WorkMeter& meter) {
    withStride(attribute.stride, [&](auto absorb) {
        const quint64 stride = absorb.stride();
        const auto cornerAt = [corners](quint32 i) { return corners == nullptr ? i : corners[i]; };
        forValues(attribute, stride, count, cornerAt, meter, [=](quint32 i, const unsigned char* bytes) {
            std::memcpy(out + i * stride, bytes, stride);
        });
    });
}

} // namespace Atelier::Vel
