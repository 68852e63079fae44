#pragma once

#include <memory>

#include <velgl/program.h>

#include "context/contextgl.h"

namespace Atelier::Vel {

struct LinkedProgram;

/// Gives VelGL access to the private part of a program.
struct ProgramAccess {
    /// Returns: the GL name; 0 when the current context `gl` does not know the program.
    static unsigned int nameIn(const ContextGL& gl, const Program& program);
    /// Returns: what was looked up when the program was linked.
    static const std::shared_ptr<const LinkedProgram>& linked(const Program& program);
};

} // namespace Atelier::Vel
