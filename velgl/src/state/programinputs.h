#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// How a vertex shader reads an attribute.
enum class InputKind { Float, Integer, Double };

struct ProgramInput {
    int location = -1; ///< -1 when the shader has no such attribute
    InputKind kind = InputKind::Float;
};

/// The program that vertices run through now, of glUseProgram or of the bound pipeline; 0 for none.
unsigned int currentVertexProgram();
/// The same for fragments.
unsigned int currentFragmentProgram();

ProgramInput programInput(unsigned int program, const QString& name);

} // namespace Atelier::Vel
