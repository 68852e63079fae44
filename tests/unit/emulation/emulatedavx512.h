#pragma once

#include "import/obj/plainlines.h"

namespace Atelier::Vel {

/// The AVX-512 parser with its instructions emulated; null where it is not compiled, or while the emulated
/// processor lacks a feature.
WideParser* findEmulatedAvx512Parser();

namespace Testing {

/// Whether the emulated processor has a feature, by the compilers' name for it.
bool isEmulated(const char* feature);

/// Takes a feature from the emulated processor while it lives.
class WithoutFeature {
public:
    explicit WithoutFeature(const char* feature);
    ~WithoutFeature();
    WithoutFeature(const WithoutFeature&) = delete;
    WithoutFeature& operator=(const WithoutFeature&) = delete;
};

} // namespace Testing

} // namespace Atelier::Vel
