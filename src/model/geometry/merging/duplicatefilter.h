#pragma once

#include <vector>

#include "geometry/merging/cornerattribute.h"
#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// The candidates for duplicates, in corner order: corners whose value in one attribute may have the same
/// bytes as that of another corner. Every corner that has such a value is a candidate. About one in sixty of
/// the corners that have no duplicate is a candidate, too. `slots` is working memory with capacity for one
/// entry per corner. `meter` counts corners.
/// Requires: at most 2^29 corners.
/// Cost:     two passes over the corners and 14 bits of memory for each.
std::vector<quint32> duplicateCandidates(const CornerAttribute& attribute, quint32 cornerCount,
                                         quint64 hashSeed, quint32* slots, const WorkMeter& meter);

} // namespace Atelier::Vel
