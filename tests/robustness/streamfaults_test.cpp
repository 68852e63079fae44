#include <velmodel/modeldataarray.h>

#include <functional>
#include <new>
#include <vector>

#include <gmock/gmock.h>

#include "faultyallocator.h"

namespace Atelier::Vel {

namespace {

using Testing::AllocationFault;
using Testing::FaultKind;

constexpr unsigned int kUnsignedInt = 0x1405;
constexpr unsigned int kDouble = 0x140A;

constexpr quint64 kFew = 5;
/// This number of elements gets its own mapping.
constexpr quint64 kMany = 300'000;

/// A short array has no spare capacity.
ModelDataArray filled(quint64 count) {
    std::vector<quint32> values(count);
    for (quint64 i = 0; i < count; ++i)
        values[i] = static_cast<quint32>(i + 1);
    ModelDataArray array(kUnsignedInt, count < kMany ? count : 0);
    if (count < kMany)
        array.setData(0, count, values.data());
    else
        array.append(count, values.data());
    return array;
}

/// Whether the array equals the result of filled(). Does not detach the array.
bool isAsFilled(const ModelDataArray& array, quint64 count) {
    ModelDataArray copy(array);
    const auto* const values = static_cast<const quint32*>(copy.data(0));
    for (quint64 i = 0; i < copy.size(); ++i)
        if (values[i] != i + 1)
            return false;
    return copy.size() == count && copy.type() == kUnsignedInt;
}

/// Changes one of two arrays that share their elements, once for each request of memory; that request and all
/// later ones are denied. Expects std::bad_alloc and that both arrays are unchanged. Returns: the number of
/// requests.
std::size_t denyEach(quint64 count, const std::function<void(ModelDataArray&)>& change) {
    for (std::size_t first = 0;; ++first) {
        const ModelDataArray source = filled(count);
        ModelDataArray array(source);
        bool isDenied = false;
        try {
            const AllocationFault fault(first, FaultKind::All);
            change(array);
        } catch (const std::bad_alloc&) {
            isDenied = true;
        }
        EXPECT_TRUE(isAsFilled(source, count)) << first;
        if (!isDenied)
            return first;
        EXPECT_TRUE(isAsFilled(array, count)) << first;
    }
}

} // namespace

TEST(StreamFaultsTest, ArrayThatGetsNoMemoryIsUnchanged) {
    const quint32 more[] = {1, 2, 3};
    const std::vector<quint32> many(kMany);
    using Change = std::function<void(ModelDataArray&)>;
    const Change writing[] = {[](ModelDataArray& array) { array.data(0); },
                              [&](ModelDataArray& array) { array.setData(0, 3, more); },
                              [&](ModelDataArray& array) { array.append(3, more); }};
    for (const Change& change : writing)
        for (const quint64 count : {kFew, kMany})
            EXPECT_GT(denyEach(count, change), 0U);
    const Change growing[] = {[](ModelDataArray& array) { array.resize(10'000'000); },
                              [](ModelDataArray& array) { array.reserve(10'000'000); },
                              [](ModelDataArray& array) { array.setType(kDouble); },
                              [&](ModelDataArray& array) { array.append(kMany, many.data()); }};
    for (const Change& change : growing)
        EXPECT_GT(denyEach(kFew, change), 0U);
}

// After one denied mapping, the array tries again.
TEST(StreamFaultsTest, LongArrayGrowsDespiteADeniedMapping) {
    const std::vector<quint32> more(30 * kMany);
    for (std::size_t first = 0; first < 2; ++first) {
        ModelDataArray array = filled(kMany);
        {
            const AllocationFault fault(first, FaultKind::One);
            array.append(more.size(), more.data());
        }
        ASSERT_EQ(array.size(), 31 * kMany);
        array.resize(kMany);
        EXPECT_TRUE(isAsFilled(array, kMany));
    }
}

} // namespace Atelier::Vel
