#pragma once

namespace Atelier::Vel::Tool {

/// The program's exit codes.
enum class ExitCode {
    Done = 0,
    CannotLoad = 1,  ///< a model could not be loaded, or holds nothing to draw
    WrongUsage = 2,  ///< the command line is not valid
    NoOpenGL = 3,    ///< no OpenGL context, or it lacks what is needed
    CannotWrite = 4, ///< the result could not be written
    Findings = 5,    ///< check --strict has found something that is probably not intended
};

} // namespace Atelier::Vel::Tool
