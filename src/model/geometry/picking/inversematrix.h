#pragma once

#include <array>
#include <optional>

namespace Atelier::Vel {

/// Four rows of four numbers.
using SpaceMatrix = std::array<std::array<double, 4>, 4>;

/// Returns: the inverse, by elimination with partial pivoting; none if the matrix has none, or one that is
/// not finite.
std::optional<SpaceMatrix> inverseOf(SpaceMatrix matrix);

/// The matrix times a vector of four numbers.
std::array<double, 4> mapped(const SpaceMatrix& matrix, const std::array<double, 4>& vector);

} // namespace Atelier::Vel
