#include "emulation/emulatedavx512.h"

#include <cstring>

namespace Atelier::Vel::Testing {

namespace {

const char* missingFeature = "";

// Instructions that run natively, without emulation.
bool hasSse41() {
#if defined(__x86_64__)
    return __builtin_cpu_supports("sse4.1") && __builtin_cpu_supports("popcnt");
#else
    return false;
#endif
}

} // namespace

bool isEmulated(const char* feature) {
    return hasSse41() && std::strcmp(feature, missingFeature) != 0;
}

WithoutFeature::WithoutFeature(const char* feature) {
    missingFeature = feature;
}

WithoutFeature::~WithoutFeature() {
    missingFeature = "";
}

} // namespace Atelier::Vel::Testing
