#pragma once

#include <algorithm>
#include <vector>

#include "geometry/merging/cornerattribute.h"
#include "geometry/merging/valuebytes.h"

namespace Atelier::Vel {

/// Corners as keys of a VertexTable: the values of all attributes, one after the other.
class CornerKeys {
public:
    /// `seed` is the initial value of every hash.
    CornerKeys(const std::vector<CornerAttribute>& attributes, quint64 seed) : _seed(seed) {
        quint64 longest = 0;
        for (const CornerAttribute& attribute : attributes) {
            // All corners are alike in an attribute without values or without bytes.
            if (attribute.valueCount == 0 || attribute.stride == 0)
                continue;
            _attributes.push_back(attribute);
            longest = std::max(longest, attribute.stride);
            _bytes = std::min(_bytes, kTooWide) + std::min(attribute.stride, kTooWide);
        }
        _zeros.resize(longest);
    }

    /// The number of words of a key; 0 if keys are too wide to be copied.
    quint32 words() const { return _bytes < kTooWide ? static_cast<quint32>((_bytes + 7) / 8) : 0; }

    /// Writes the hashes and, if keys are copied, the keys of `count` corners. The unused bytes of the last
    /// word of a key are unchanged.
    void read(quint32 first, quint32 count, quint64* hashes, quint64* keys) const {
        std::fill_n(hashes, count, _seed);
        const quint64 step = words() * sizeof(quint64);
        auto* place = reinterpret_cast<unsigned char*>(keys);
        for (const CornerAttribute& attribute : _attributes) {
            withStride(attribute.stride, [&](auto value) {
                forCorners(attribute, value.stride(), first, count,
                           [&](quint32 i, const unsigned char* bytes) {
                               hashes[i] = value.hashed(hashes[i], bytes);
                               if (step != 0)
                                   value.copy(bytes, place + i * step);
                           });
            });
            if (step != 0)
                place += attribute.stride;
        }
        std::transform(hashes, hashes + count, hashes, finishedHash);
    }

    bool equal(quint32 a, quint32 b) const {
        return std::all_of(_attributes.begin(), _attributes.end(), [&](const CornerAttribute& attribute) {
            return withStride(attribute.stride, [&](auto value) {
                return value.equal(bytesOf(attribute, a, value.stride()),
                                   bytesOf(attribute, b, value.stride()));
            });
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
    // Two cache lines hold a key of 128 bytes. Copying wider keys costs more than it saves.
    static constexpr quint64 kTooWide = 129;
    // Prefetch distance in bytes along a run of values: 16 cache lines, about one memory latency.
    static constexpr quint64 kBytesAhead = 1024;

    /// Calls `take(i, bytes)` for each of `count` corners. i counts from 0, and `bytes` is the value of the
    /// corner.
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
        const quint64 ahead = std::min(kBytesAhead, (attribute.valueCount - value - count) * stride);
        for (quint32 i = 0; i < count; ++i) {
            prefetch(bytes + i * stride + ahead);
            take(i, bytes + i * stride);
        }
    }

    /// Whether the corners use consecutive values, as in a mesh without shared values.
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
    quint64 _bytes = 0; ///< of the values of a corner; inexact above kTooWide
    quint64 _seed;
};

} // namespace Atelier::Vel
