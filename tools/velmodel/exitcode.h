#pragma once

namespace Atelier::Vel::Tool {

/// What the program tells its caller.
enum class ExitCode {
    Done = 0,
    CannotLoad = 1,  ///< a model could not be loaded, or holds nothing to draw
    WrongUsage = 2,  ///< the command line makes no sense
    NoOpenGL = 3,    ///< no OpenGL context, or it cannot do what is asked
    CannotWrite = 4, ///< the result could not be written
};

} // namespace Atelier::Vel::Tool
