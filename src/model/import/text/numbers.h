#pragma once

namespace Atelier::Vel {

/// Computes the same number, bit for bit, as QString::toFloat for an ASCII token that is an ordinary decimal.
/// Returns: false, with `value` unchanged, for any other token; the caller must use QString then.
bool parseFloat(const char* first, const char* last, float& value);

/// The same for QString::toInt in base 10.
bool parseInt(const char* first, const char* last, int& value);

} // namespace Atelier::Vel
