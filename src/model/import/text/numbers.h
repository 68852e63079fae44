#pragma once

namespace Atelier::Vel {

/// The number that QString::toFloat gives for an ASCII token, bit for bit, where the token is an ordinary
/// decimal. Returns: false, and leaves `value` alone, where it is not; QString has to be asked then.
bool parseFloat(const char* first, const char* last, float& value);

/// The same for QString::toInt in base 10.
bool parseInt(const char* first, const char* last, int& value);

} // namespace Atelier::Vel
