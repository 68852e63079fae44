// The steps are file-local: they are tested in the unit that defines them.
#include "geometry/polygontriangulator.cpp"
