#include "geometry/bytemerging.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "geometry/cornerset.h"

namespace Atelier::Vel {

namespace {

template<typename T>
T load(const unsigned char* bytes) {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

/// Mixes one value into a running hash, whole words at a time.
quint64 absorb(quint64 hash, const unsigned char* bytes, quint64 count) {
    for (; count >= 16; bytes += 16, count -= 16)
        hash = mixWords(hash, load<quint64>(bytes), load<quint64>(bytes + 8));
    quint64 words[2] = {0, 0};
    if (count == 12) {
        words[0] = load<quint64>(bytes);
        words[1] = load<quint32>(bytes + 8);
    } else if (count == 8) {
        words[0] = load<quint64>(bytes);
    } else if (count != 0) {
        std::memcpy(words, bytes, count);
    } else {
        return hash;
    }
    return mixWords(hash, words[0], words[1]);
}

bool equalBytes(const unsigned char* a, const unsigned char* b, quint64 count) {
    for (; count >= 8; a += 8, b += 8, count -= 8)
        if (load<quint64>(a) != load<quint64>(b))
            return false;
    if (count >= 4) {
        if (load<quint32>(a) != load<quint32>(b))
            return false;
        a += 4;
        b += 4;
        count -= 4;
    }
    return count == 0 || std::memcmp(a, b, count) == 0;
}

/// Corners as keys of a CornerSet: the bytes of their values, compared in place.
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
        }
        _zeros.resize(longest);
    }

    void hash(quint32 first, quint32 count, quint64* hashes) const {
        std::fill_n(hashes, count, 0);
        for (const CornerAttribute& attribute : _attributes)
            for (quint32 i = 0; i < count; ++i)
                hashes[i] = absorb(hashes[i], bytesOf(attribute, first + i), attribute.stride);
    }

    bool equal(quint32 a, quint32 b) const {
        return std::all_of(_attributes.begin(), _attributes.end(), [&](const CornerAttribute& attribute) {
            return equalBytes(bytesOf(attribute, a), bytesOf(attribute, b), attribute.stride);
        });
    }

private:
    const unsigned char* bytesOf(const CornerAttribute& attribute, quint32 corner) const {
        const quint64 value = attribute.valueOf(corner);
        return value == attribute.valueCount ? _zeros.data() : attribute.values + value * attribute.stride;
    }

    std::vector<CornerAttribute> _attributes;
    std::vector<unsigned char> _zeros;
};

} // namespace

quint32 mergeByBytes(const std::vector<CornerAttribute>& attributes, quint32 cornerCount,
                     quint32* vertexOfCorner, quint32* firstCorner) {
    const ByteKeys keys(attributes);
    CornerSet set(cornerCount);
    return set.insertAll(keys, cornerCount, vertexOfCorner, firstCorner);
}

void gatherValues(const CornerAttribute& attribute, const quint32* corners, quint32 count,
                  unsigned char* out) {
    const quint64 stride = attribute.stride;
    for (quint32 i = 0; i < count; ++i, out += stride) {
        const quint64 value = attribute.valueOf(corners[i]);
        if (value == attribute.valueCount)
            std::memset(out, 0, stride);
        else
            std::memcpy(out, attribute.values + value * stride, stride);
    }
}

} // namespace Atelier::Vel
