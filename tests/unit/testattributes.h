#pragma once

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "geometry/merging/cornerattribute.h"
#include "support/guardedarray.h"

/// Attributes of a mesh for the tests of merging, and the defined result of merging its corners.
namespace Atelier::Vel::Testing {

/// Values and a list of exactly their size.
struct TestAttribute {
    GuardedArray<unsigned char> values;
    GuardedArray<quint32> indices;
    quint64 stride;

    TestAttribute(const std::vector<unsigned char>& bytes, const std::vector<quint32>& list,
                  quint64 bytesPerValue)
        : values(bytes), indices(list), stride(bytesPerValue) {}

    CornerAttribute view() const {
        CornerAttribute attribute{indices.data(), indices.size()};
        attribute.values = values.data();
        attribute.valueCount = values.size() / stride;
        attribute.stride = stride;
        return attribute;
    }
};

inline std::vector<CornerAttribute> views(const std::vector<TestAttribute>& attributes) {
    std::vector<CornerAttribute> result;
    std::transform(attributes.begin(), attributes.end(), std::back_inserter(result),
                   [](const TestAttribute& attribute) { return attribute.view(); });
    return result;
}

/// The vertex of each corner, and the first corner of each vertex.
struct Merged {
    std::vector<quint32> vertexOfCorner;
    std::vector<quint32> firstCorner;
};

/// Numbers the different keys of the corners in the order in which they appear.
template<typename KeyOf>
Merged numbered(quint32 cornerCount, const KeyOf& keyOf) {
    Merged merged;
    std::map<decltype(keyOf(0U)), quint32> numbers;
    for (quint32 corner = 0; corner < cornerCount; ++corner) {
        const auto number = numbers.emplace(keyOf(corner), static_cast<quint32>(numbers.size()));
        if (number.second)
            merged.firstCorner.push_back(corner);
        merged.vertexOfCorner.push_back(number.first->second);
    }
    return merged;
}

/// All bytes of all values of a corner; zeros if it has no value.
inline std::string bytesOfCorner(const std::vector<CornerAttribute>& attributes, quint32 corner) {
    std::string bytes;
    for (const CornerAttribute& attribute : attributes) {
        const quint64 value = attribute.valueOf(corner);
        const unsigned char* const first = attribute.values + value * attribute.stride;
        bytes += value == attribute.valueCount ? std::string(attribute.stride, '\0')
                                               : std::string(first, first + attribute.stride);
    }
    return bytes;
}

/// The definition of merging by bytes.
inline Merged mergedPlainly(const std::vector<CornerAttribute>& attributes, quint32 cornerCount) {
    return numbered(cornerCount, [&](quint32 corner) { return bytesOfCorner(attributes, corner); });
}

/// The numbers of all values of a corner; the number of values if it has no value.
inline std::vector<quint64> tupleOfCorner(const std::vector<CornerAttribute>& attributes, quint32 corner) {
    std::vector<quint64> tuple;
    for (const CornerAttribute& attribute : attributes)
        tuple.push_back(attribute.valueOf(corner));
    return tuple;
}

/// The definition of merging by the numbers of values.
inline Merged mergedByTuples(const std::vector<CornerAttribute>& attributes, quint32 cornerCount) {
    return numbered(cornerCount, [&](quint32 corner) { return tupleOfCorner(attributes, corner); });
}

} // namespace Atelier::Vel::Testing
