#include "geometry/picking/inversematrix.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Atelier::Vel {

namespace {

constexpr std::size_t kSize = 4;

std::size_t pivotRow(const SpaceMatrix& matrix, std::size_t column) {
    std::size_t best = column;
    for (std::size_t row = column + 1; row < kSize; ++row)
        if (std::fabs(matrix[row][column]) > std::fabs(matrix[best][column]))
            best = row;
    return best;
}

void subtract(std::array<double, kSize>& row, double factor, const std::array<double, kSize>& other) {
    for (std::size_t i = 0; i < kSize; ++i)
        row[i] -= factor * other[i];
}

bool isFinite(const SpaceMatrix& matrix) {
    return std::all_of(matrix.begin(), matrix.end(), [](const std::array<double, kSize>& row) {
        return std::all_of(row.begin(), row.end(), [](double number) { return std::isfinite(number); });
    });
}

} // namespace

std::optional<SpaceMatrix> inverseOf(SpaceMatrix matrix) {
    if (!isFinite(matrix))
        return {};
    SpaceMatrix inverse{};
    for (std::size_t i = 0; i < kSize; ++i)
        inverse[i][i] = 1;
    for (std::size_t column = 0; column < kSize; ++column) {
        const std::size_t pivot = pivotRow(matrix, column);
        std::swap(matrix[column], matrix[pivot]);
        std::swap(inverse[column], inverse[pivot]);
        const double divisor = matrix[column][column];
        if (divisor == 0)
            return {};
        for (std::size_t i = 0; i < kSize; ++i) {
            matrix[column][i] /= divisor;
            inverse[column][i] /= divisor;
        }
        for (std::size_t row = 0; row < kSize; ++row) {
            if (row == column)
                continue;
            const double factor = matrix[row][column];
            subtract(matrix[row], factor, matrix[column]);
            subtract(inverse[row], factor, inverse[column]);
        }
    }
    return isFinite(inverse) ? std::optional(inverse) : std::nullopt;
}

std::array<double, 4> mapped(const SpaceMatrix& matrix, const std::array<double, 4>& vector) {
    std::array<double, kSize> result{};
    for (std::size_t row = 0; row < kSize; ++row)
        for (std::size_t i = 0; i < kSize; ++i)
            result[row] += matrix[row][i] * vector[i];
    return result;
}

} // namespace Atelier::Vel
