#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// How a vertex shader reads an attribute.
enum class InputKind { Float, Integer, Double };

struct ProgramInput {
    int location = -1; ///< -1 when the program reads no such attribute
    InputKind kind = InputKind::Float;
};

/// Returns: the program of the vertex stage: the one in use, else that of the bound pipeline; 0 for none.
unsigned int currentVertexProgram();
/// Returns: the same for the fragment stage.
unsigned int currentFragmentProgram();

/// Returns: how the program reads the attribute `name`.
ProgramInput programInput(unsigned int program, const QString& name);

} // namespace Atelier::Vel
