#pragma once

namespace Atelier::Vel {

/// Returns: the size of one element of a GL scalar type in bytes; 0 for a type that vertex streams cannot
/// have.
int scalarSize(unsigned int type);

/// Returns: whether elements of the type are integers.
bool isIntegerType(unsigned int type);

/// Returns: element `index` of an array of scalars as a double.
/// Requires: scalarSize(type) is not 0, and `data` holds the element.
double scalarAt(const char* data, unsigned int type, long long index);

} // namespace Atelier::Vel
