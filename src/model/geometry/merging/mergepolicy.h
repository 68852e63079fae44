#pragma once

#include <algorithm>
#include <vector>

#include "geometry/merging/cornerattribute.h"

namespace Atelier::Vel {

/// The cost of numbering the tuples of corners so far.
struct TupleCost {
    std::size_t places; ///< numbers per tuple
    quint64 tuples;     ///< distinct tuples so far
    quint64 steps;      ///< comparisons with a different tuple
};

/// Selects the way of merging. All thresholds are here, each with its reason. None of them changes the
/// result.
///
/// There are three ways. Each is cheaper than the next if it applies. The first numbers index tuples without
/// reading the values. The second filters the remaining corners for candidates and looks up only those by
/// their bytes. The third looks up all corners.
struct MergePolicy {
    // Meshes with more attributes are rare. Their corners are merged by bytes directly.
    static constexpr std::size_t kMaxTuplePlaces = 6;

    // Merging by bytes needs about this much memory per corner, so merging by tuples may use the same amount.
    quint64 bytesPerCorner = 16;
    quint64 bytesPerMergedTuple = 16;
    // Comparing a tuple of a chain takes about a nanosecond, a look-up by bytes about ten.
    quint64 stepsPerCorner = 8;
    // A few long chains at the beginning do not matter: 65,536 steps take less than a millisecond.
    quint64 freeSteps = 65536;

    // At the beginning, faces in random order mostly use new values. It is too early to decide then.
    quint64 minCornersToJudge = 65536;
    // The same for a large mesh: the decision waits until there is one corner for eight values.
    quint64 valuesPerCornerToJudge = 8;
    // After that, one corner in this number must repeat a tuple.
    quint64 cornersPerRepeatedTuple = 32;

    // A filter has seven slots per corner. Beyond this, slot numbers would not fit 32 bits.
    quint32 maxFilteredCorners = 1U << 29;
    // With more candidates than one corner in four, a table of all corners is as fast as filter and table
    // together.
    quint32 cornersPerCandidate = 4;

    /// Whether numbering tuples may be worthwhile. If an attribute has more values than half the number of
    /// corners, hardly any two corners share a tuple.
    bool mayNumberTuples(const std::vector<CornerAttribute>& attributes, quint32 cornerCount) const {
        return !attributes.empty() && attributes.size() <= kMaxTuplePlaces &&
               std::all_of(attributes.begin(), attributes.end(),
                           [cornerCount](const CornerAttribute& attribute) {
                               return attribute.indices != nullptr && attribute.valueCount <= cornerCount / 2;
                           });
    }

    /// Whether numbering tuples is worthwhile so far, after `added` of `expected` corners. It is not if most
    /// corners have their own tuple or if many tuples share their first number.
    bool isTupleTableWorthwhile(const TupleCost& cost, quint64 added, quint64 expected) const {
        const quint64 tupleBytes = cost.places * sizeof(quint32);
        const quint64 slotBytes = tupleBytes + sizeof(quint32);
        return cost.tuples * (tupleBytes + std::max(slotBytes, bytesPerMergedTuple)) <=
                   bytesPerCorner * expected &&
               cost.steps <= stepsPerCorner * added + freeSteps;
    }

    /// The same while corners are still being read. So far there are `added` corners, which use up to
    /// `values` values.
    bool isReadingTuplesWorthwhile(const TupleCost& cost, quint64 added, quint64 values) const {
        const bool mayRepeatLater = added < std::max(minCornersToJudge, values / valuesPerCornerToJudge);
        return (mayRepeatLater || cost.tuples <= added - added / cornersPerRepeatedTuple) &&
               isTupleTableWorthwhile(cost, added, std::max({added, 2 * values, 2 * minCornersToJudge}));
    }

    /// Whether candidates for duplicates can be filtered by the values of `key`.
    bool canFilter(const CornerAttribute& key, quint32 cornerCount) const {
        return key.valueCount != 0 && key.stride != 0 && cornerCount <= maxFilteredCorners;
    }

    /// Whether there are few enough candidates to look up only them.
    bool areFewCandidates(quint32 candidates, quint32 cornerCount) const {
        return candidates <= cornerCount / cornersPerCandidate;
    }
};

} // namespace Atelier::Vel
