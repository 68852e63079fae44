#pragma once

#include <velmodel/modelbuilder.h>

namespace Atelier::Vel {

/// For a builder whose input nobody looks at again.
struct ModelBuilderInput {
    /// Lets the builder give its attributes' values and indices back as soon as vertices are made from them.
    static void releaseOnceMerged(ModelBuilder& builder) { builder._releasesInput = true; }
};

} // namespace Atelier::Vel
