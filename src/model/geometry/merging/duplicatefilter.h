#pragma once

#include <vector>

#include "geometry/merging/cornerattribute.h"
#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// The candidates for duplicates: those corners whose value in one attribute may have the same bytes as that
/// of another corner, in their order. Every corner that has such a value is among them. `slots` has capacity
/// for an entry per corner, for working memory; `meter` counts corners. Requires: at most 2^29 corners. Cost:
/// two passes over the corners and 14 bits of memory for each. About one in sixty of the corners that have
///           no duplicate is a candidate, too.
std::vector<quint32> duplicateCandidates(const CornerAttribute& attribute, quint32 cornerCount,
                                         quint64 hashSeed, quint32* slots, const WorkMeter& meter);

} // namespace Atelier::Vel
