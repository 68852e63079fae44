#pragma once

#include <algorithm>
#include <vector>

#include "geometry/merging/cornerattribute.h"

namespace Atelier::Vel {

/// What numbering the tuples of some corners has cost so far.
struct TupleCost {
    std::size_t places; ///< numbers of a tuple
    quint64 tuples;     ///< distinct ones so far
    quint64 steps;      ///< tuples that were compared in vain
};

/// Decides which way of merging is used. Every threshold stands here, with its reason; none changes the
/// result.
///
/// There are three ways, each cheaper than the next where it applies: index tuples are numbered without a
/// look at the values; what is left is filtered for candidates, and only those are looked up by their bytes;
/// or all are looked up.
struct MergePolicy {
    // More attributes are rare; their corners are merged by bytes at once.
    static constexpr std::size_t kMaxTuplePlaces = 6;

    // Merging by bytes needs about this much for each corner, so merging by tuples may use as much.
    quint64 bytesPerCorner = 16;
    quint64 bytesPerMergedTuple = 16;
    // Comparing a tuple of a chain takes about a nanosecond, a look-up by bytes about ten.
    quint64 stepsPerCorner = 8;
    // A few long chains at the beginning do not matter: 65,536 steps take less than a millisecond.
    quint64 freeSteps = 65536;

    // Faces in random order use new values most of the time to begin with: too early to decide.
    quint64 minCornersToJudge = 65536;
    // The same in a large mesh: until the corners have used an eighth of the values.
    quint64 valuesPerCornerToJudge = 8;
    // From then on one corner in so many has to repeat a tuple.
    quint64 cornersPerRepeatedTuple = 32;

    // A filter has seven slots per corner. Beyond this, slot numbers would not fit 32 bits.
    quint32 maxFilteredCorners = 1U << 29;
    // With more candidates than one corner in four, a table of all corners is as fast as filter and table
    // together.
    quint32 cornersPerCandidate = 4;

    /// Whether numbering tuples may be worthwhile. With more values than half of the corners, hardly two
    /// corners share a tuple.
    bool mayNumberTuples(const std::vector<CornerAttribute>& attributes, quint32 cornerCount) const {
        return !attributes.empty() && attributes.size() <= kMaxTuplePlaces &&
               std::all_of(attributes.begin(), attributes.end(),
                           [cornerCount](const CornerAttribute& attribute) {
                               return attribute.indices != nullptr && attribute.valueCount <= cornerCount / 2;
                           });
    }

    /// Whether numbering tuples is worthwhile so far, after `added` corners of an expected number. It is not
    /// if most corners have tuples of their own, or if many tuples share their first number.
    bool isTupleTableWorthwhile(const TupleCost& cost, quint64 added, quint64 expected) const {
        const quint64 tupleBytes = cost.places * sizeof(quint32);
        const quint64 slotBytes = tupleBytes + sizeof(quint32);
        return cost.tuples * (tupleBytes + std::max(slotBytes, bytesPerMergedTuple)) <=
                   bytesPerCorner * expected &&
               cost.steps <= stepsPerCorner * added + freeSteps;
    }

    /// The same while corners are still being read, `added` of them so far, which use up to `values` values.
    bool isReadingTuplesWorthwhile(const TupleCost& cost, quint64 added, quint64 values) const {
        const bool mayRepeatLater = added < std::max(minCornersToJudge, values / valuesPerCornerToJudge);
        return (mayRepeatLater || cost.tuples <= added - added / cornersPerRepeatedTuple) &&
               isTupleTableWorthwhile(cost, added, std::max({added, 2 * values, 2 * minCornersToJudge}));
    }

    /// Whether candidates for duplicates are filtered by the values of `key`.
    bool canFilter(const CornerAttribute& key, quint32 cornerCount) const {
        return key.valueCount != 0 && key.stride != 0 && cornerCount <= maxFilteredCorners;
    }

    /// Whether so few candidates were found that only they are looked up.
    bool areFewCandidates(quint32 candidates, quint32 cornerCount) const {
        return candidates <= cornerCount / cornersPerCandidate;
    }
};

} // namespace Atelier::Vel
