#pragma once

#include <velmodel/modelbuilder.h>

namespace Atelier::Vel {

/// For builders that upload once and are thrown away then.
struct SingleUpload {
    /// Lets the builder drop what it was given as soon as the upload has made its own data of it, which
    /// nearly halves the peak of memory of a large mesh. Nothing but that upload may be asked of it
    /// afterwards.
    static void expect(ModelBuilder& builder) { builder._keepsInput = false; }
};

} // namespace Atelier::Vel
