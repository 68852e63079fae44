#pragma once

#include "import/obj/plainlines.h"

namespace Atelier::Vel {

/// The AVX-512 parser with emulated instructions; null if it is not compiled or the emulated processor lacks
/// a feature.
WideParser* findEmulatedAvx512Parser();

namespace Testing {

/// Whether the emulated processor has a feature, by the compilers' name for it.
bool isEmulated(const char* feature);

/// Removes a feature from the emulated processor during its lifetime.
class WithoutFeature {
public:
    explicit WithoutFeature(const char* feature);
    ~WithoutFeature();
    WithoutFeature(const WithoutFeature&) = delete;
    WithoutFeature& operator=(const WithoutFeature&) = delete;
};

} // namespace Testing

} // namespace Atelier::Vel
