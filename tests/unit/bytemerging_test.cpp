#include "geometry/bytemerging.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>
#include <numeric>
#include <random>
#include <string>

#include <gmock/gmock.h>

namespace Atelier::Vel {
namespace {

/// Corners with a position and a colour, drawn from few or many different values; some have no value.
struct Mesh {
    std::vector<float> positions;
    std::vector<quint32> colours;
    std::vector<quint32> positionIndices;
    std::vector<quint32> colourIndices;

    Mesh(std::mt19937& random, quint32 cornerCount, quint32 differentValues) {
        const auto below = [&random](quint32 limit) { return static_cast<quint32>(random() % limit); };
        // So many that corners seldom share one by chance: else nothing would be sieved.
        const quint32 valueCount = cornerCount * 32;
        for (quint32 value = 0; value < valueCount; ++value) {
            colours.push_back(below(4));
            for (int axis = 0; axis < 3; ++axis)
                positions.push_back(axis == 0 ? static_cast<float>(below(differentValues)) : 0.0F);
        }
        for (quint32 corner = 0; corner < cornerCount; ++corner) {
            const bool isRepeated = corner != 0 && below(30) == 0;
            const quint32 source = below(corner + 1);
            positionIndices.push_back(isRepeated ? positionIndices[source % corner] : below(valueCount + 1));
            colourIndices.push_back(isRepeated ? colourIndices[source % corner] : below(valueCount + 1));
        }
    }

    std::vector<CornerAttribute> attributes() const {
        const quint64 valueCount = colours.size();
        CornerAttribute position{positionIndices.data(), positionIndices.size()};
        position.values = reinterpret_cast<const unsigned char*>(positions.data());
        position.valueCount = valueCount;
        position.stride = 3 * sizeof(float);
        CornerAttribute colour{colourIndices.data(), colourIndices.size()};
        colour.values = reinterpret_cast<const unsigned char*>(colours.data());
        colour.valueCount = valueCount;
        colour.stride = sizeof(quint32);
        // Sieved is by the first of those with the most values, and colours are all alike.
        return {position, colour};
    }
};

struct Merged {
    std::vector<quint32> vertexOfCorner;
    std::vector<quint32> firstCorner;
};

Merged mergedByBytes(const std::vector<CornerAttribute>& attributes, quint32 cornerCount) {
    Merged merged{std::vector<quint32>(cornerCount), std::vector<quint32>(cornerCount)};
    merged.firstCorner.resize(
        mergeByBytes(attributes, cornerCount, merged.vertexOfCorner.data(), merged.firstCorner.data()));
    return merged;
}

Merged sieved(const std::vector<CornerAttribute>& attributes, quint32 cornerCount) {
    Merged merged{std::vector<quint32>(cornerCount), std::vector<quint32>(cornerCount)};
    const quint32 vertexCount = mergeMostlyDistinct(attributes, cornerCount, merged.vertexOfCorner.data(),
                                                    [&merged] { return merged.firstCorner.data(); });
    merged.firstCorner.resize(vertexCount);
    if (vertexCount == cornerCount) {
        std::iota(merged.vertexOfCorner.begin(), merged.vertexOfCorner.end(), 0U);
        std::iota(merged.firstCorner.begin(), merged.firstCorner.end(), 0U);
    }
    return merged;
}

void expectSameVertices(const std::vector<CornerAttribute>& attributes, quint32 cornerCount) {
    const Merged expected = mergedByBytes(attributes, cornerCount);
    const Merged merged = sieved(attributes, cornerCount);
    EXPECT_EQ(merged.vertexOfCorner, expected.vertexOfCorner);
    EXPECT_EQ(merged.firstCorner, expected.firstCorner);
}

/// Values of any width, and a list of corners that use one after the other for a while, then any.
struct Attribute {
    std::vector<unsigned char> values;
    std::vector<quint32> indices;
    quint64 stride;

    Attribute(std::mt19937& random, quint32 cornerCount, quint64 bytes, quint32 differentValues)
        : stride(bytes) {
        const auto below = [&random](quint32 limit) { return static_cast<quint32>(random() % limit); };
        const quint32 valueCount = cornerCount + 70;
        for (quint32 value = 0; value < valueCount; ++value) {
            values.resize(values.size() + bytes);
            // At both ends: a key has to hold all of a value.
            std::uint16_t number = static_cast<std::uint16_t>(below(differentValues));
            std::memcpy(&values[value * bytes], &number, std::min<std::size_t>(bytes, sizeof number));
            values.back() = static_cast<unsigned char>(below(2));
        }
        while (indices.size() < cornerCount - below(2)) {
            const bool isRun = below(3) == 0;
            const quint32 first = below(valueCount + 3);
            for (quint32 i = 0; i < (isRun ? 70 : 20) && indices.size() < cornerCount; ++i)
                indices.push_back(isRun ? first + i : below(valueCount + 3));
        }
    }

    CornerAttribute view() const {
        CornerAttribute attribute{indices.data(), indices.size()};
        attribute.values = values.data();
        attribute.valueCount = values.size() / stride;
        attribute.stride = stride;
        return attribute;
    }
};

/// The definition: corners are alike when all bytes of all their values are, zeros where they have none.
Merged mergedPlainly(const std::vector<CornerAttribute>& attributes, quint32 cornerCount) {
    Merged merged;
    std::map<std::string, quint32> vertices;
    for (quint32 corner = 0; corner < cornerCount; ++corner) {
        std::string bytes;
        for (const CornerAttribute& attribute : attributes) {
            const quint64 value = attribute.valueOf(corner);
            bytes += value == attribute.valueCount
                         ? std::string(attribute.stride, '\0')
                         : std::string(attribute.values + value * attribute.stride,
                                       attribute.values + (value + 1) * attribute.stride);
        }
        const auto vertex = vertices.emplace(bytes, static_cast<quint32>(vertices.size()));
        if (vertex.second)
            merged.firstCorner.push_back(corner);
        merged.vertexOfCorner.push_back(vertex.first->second);
    }
    return merged;
}

TEST(ByteMergingTest, CornersWithTheSameBytesAreOneVertex) {
    std::mt19937 random(62);
    for (const std::vector<quint64>& strides : {std::vector<quint64>{1},
                                                {4},
                                                {12},
                                                {3, 5},
                                                {12, 8, 12},
                                                {16, 4},
                                                {20, 12},
                                                {100, 28},
                                                {100, 29},
                                                {300}})
        for (const quint32 differentValues : {2U, 15U, 60000U})
            for (const quint32 cornerCount : {1U, 31U, 33U, 3000U}) {
                std::vector<Attribute> attributes;
                for (const quint64 stride : strides)
                    attributes.emplace_back(random, cornerCount, stride, differentValues);
                std::vector<CornerAttribute> views;
                std::transform(attributes.begin(), attributes.end(), std::back_inserter(views),
                               [](const Attribute& attribute) { return attribute.view(); });
                const Merged expected = mergedPlainly(views, cornerCount);
                const Merged merged = mergedByBytes(views, cornerCount);
                ASSERT_EQ(merged.vertexOfCorner, expected.vertexOfCorner);
                ASSERT_EQ(merged.firstCorner, expected.firstCorner);
            }
}

TEST(ByteMergingTest, SievedCornersMergeAsAllDo) {
    std::mt19937 random(61);
    for (const quint32 differentValues : {1U, 3U, 1000U, 100000U, 100000000U})
        for (const quint32 cornerCount : {1U, 2U, 40U, 5000U}) {
            SCOPED_TRACE(testing::Message() << cornerCount << " corners, " << differentValues << " values");
            expectSameVertices(Mesh(random, cornerCount, differentValues).attributes(), cornerCount);
        }
}

TEST(ByteMergingTest, CornersWithoutAnyBytesAreOneVertex) {
    std::vector<quint32> vertexOfCorner(3);
    std::vector<quint32> firstCorner(3);
    const auto firstCorners = [&firstCorner] { return firstCorner.data(); };
    EXPECT_EQ(mergeMostlyDistinct({CornerAttribute()}, 3, vertexOfCorner.data(), firstCorners), 1U);
    EXPECT_THAT(vertexOfCorner, testing::ElementsAre(0, 0, 0));
    EXPECT_EQ(mergeMostlyDistinct({CornerAttribute()}, 0, nullptr, firstCorners), 0U);
}

} // namespace
} // namespace Atelier::Vel
