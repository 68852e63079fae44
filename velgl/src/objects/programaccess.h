#pragma once

#include <memory>

#include <velgl/program.h>

#include "context/contextgl.h"

namespace Atelier::Vel {

struct LinkedProgram;

/// A shader and what error texts call it, such as "Vertex shader".
struct ShaderText {
    QString name;
    QByteArray source;
};

/// Gives VelGL access to the private part of a program.
struct ProgramAccess {
    /// The same as Program::fromSource(), with other names in errors.
    static std::unique_ptr<Program> make(const ShaderText& vertex, const ShaderText& fragment,
                                         const ProgramOptions& options, QString& error);
    /// Returns: the GL name; 0 when the current context `gl` does not know the program.
    static unsigned int nameIn(const ContextGL& gl, const Program& program);
    /// Returns: what was looked up when the program was linked.
    static const std::shared_ptr<const LinkedProgram>& linked(const Program& program);
};

} // namespace Atelier::Vel
