#pragma once

namespace Atelier::Vel {

/// The bytes of one element of a GL scalar type; 0 for a type that vertex streams cannot have.
int scalarSize(unsigned int type);

/// Whether elements of the type are integers.
bool isIntegerType(unsigned int type);

/// Element `index` of an array of scalars as a double. Requires: scalarSize(type) is not 0.
double scalarAt(const char* data, unsigned int type, long long index);

} // namespace Atelier::Vel
