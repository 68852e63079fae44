#include "import/text/numbers.h"

#include <cfloat>
#include <cmath>
#include <cstdint>

#include <fast_float/fast_float.h>

#include "import/text/digits.h"

namespace Atelier::Vel {

namespace {

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

// The parts of a decimal: sign, digits[.digits], exponent.
struct Decimal {
    bool negative = false;
    int digits = 0;             ///< of the mantissa, leading zeros included
    std::uint64_t mantissa = 0; ///< wrong if there are more than 19 digits
    int exponent = 0;
};

const char* readDigits(const char* first, const char* last, Decimal& decimal) {
    for (; first != last && isDigit(*first); ++first) {
        decimal.mantissa = decimal.mantissa * 10 + static_cast<std::uint64_t>(*first - '0');
        ++decimal.digits;
    }
    return first;
}

// Reads an integer with an optional sign. Returns: false if it is missing or has more than `maxDigits`
// digits.
bool readInteger(const char* first, const char* last, int maxDigits, int& value) {
    const bool negative = first != last && *first == '-';
    if (first != last && (*first == '-' || *first == '+'))
        ++first;
    if (first == last || last - first > maxDigits)
        return false;
    int magnitude = 0;
    for (; first != last; ++first) {
        if (!isDigit(*first))
            return false;
        magnitude = magnitude * 10 + (*first - '0');
    }
    value = negative ? -magnitude : magnitude;
    return true;
}

bool readExponent(const char* first, const char* last, int& exponent) {
    constexpr int kMaxDigits = 4;
    int value = 0;
    if (!readInteger(first, last, kMaxDigits, value))
        return false;
    exponent += value;
    return true;
}

bool readDecimal(const char* first, const char* last, Decimal& decimal) {
    decimal.negative = first != last && *first == '-';
    if (first != last && (*first == '-' || *first == '+'))
        ++first;
    first = readDigits(first, last, decimal);
    if (first != last && *first == '.') {
        const char* fraction = first + 1;
        first = readDigits(fraction, last, decimal);
        decimal.exponent = -static_cast<int>(first - fraction);
    }
    if (decimal.digits == 0)
        return false;
    if (first == last)
        return true;
    return (*first == 'e' || *first == 'E') && readExponent(first + 1, last, decimal.exponent);
}

// Both operands are exact, so the single operation gives the correctly rounded quotient or product.
bool exactDouble(const Decimal& decimal, double& value) {
    if (decimal.digits > 19 || decimal.mantissa > kMaxExactMantissa ||
        std::abs(decimal.exponent) > kMaxExactPower)
        return false;
    const double mantissa = static_cast<double>(decimal.mantissa);
    value = decimal.exponent < 0 ? mantissa / kPowersOfTen[-decimal.exponent]
                                 : mantissa * kPowersOfTen[decimal.exponent];
    return true;
}

} // namespace

bool parseFloat(const char* first, const char* last, float& value) {
    Decimal decimal;
    if (!readDecimal(first, last, decimal))
        return false;
    double magnitude = 0.0;
    if (!exactDouble(decimal, magnitude)) {
        const char* digits = first + (*first == '-' || *first == '+' ? 1 : 0);
        const auto result = fast_float::from_chars(digits, last, magnitude);
        if (result.ec != std::errc() || result.ptr != last)
            return false;
    }
    // QString has special rules near and beyond the ends of the range of floats.
    const bool ordinary = magnitude >= 2.0 * FLT_MIN && magnitude <= 0.5 * FLT_MAX;
    const bool zero = magnitude == 0.0 && decimal.mantissa == 0 && decimal.digits <= 19;
    if (!ordinary && !zero)
        return false;
    value = static_cast<float>(decimal.negative ? -magnitude : magnitude);
    return true;
}

bool parseInt(const char* first, const char* last, int& value) {
    // Nine digits always fit.
    constexpr int kMaxDigits = 9;
    return readInteger(first, last, kMaxDigits, value);
}

} // namespace Atelier::Vel
