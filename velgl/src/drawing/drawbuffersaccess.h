#pragma once

#include <velgl/drawbuffers.h>

#include "context/contextgl.h"
#include "objects/linkedprogram.h"

namespace Atelier::Vel {

class DrawCommands;

/// Commands in an indirect buffer, by number.
struct CommandRange {
    int first = 0;
    int end = 0; ///< one beyond the last; not above `first` in an empty range
};

/// Gives VelGL access to the private part of a drawable. A draw has two steps: prepare() may throw, bind()
/// and draw() only call OpenGL, unless a client has derived the vertex array.
struct DrawBuffersAccess {
    /// The same as DrawBuffers::indexBuffer() and VAO(), without a reference of their own.
    static const BufferObject* indexBuffer(const DrawBuffers& buffers);
    static const VertexArrayObject* vertexArray(const DrawBuffers& buffers);
    /// Makes what a draw needs: the buffer of commands, the vertex array and its streams for `program`.
    /// Returns: the name of the buffer of commands; 0 when nothing can be drawn.
    static unsigned int prepare(DrawBuffers& buffers, const ContextGL& gl, const DrawProgram& program);
    /// Binds the vertex array and the indices.
    /// Returns: whether a vertex array is bound. unbind() follows in any case.
    static bool bind(DrawBuffers& buffers, const ContextGL& gl);
    static void unbind(DrawBuffers& buffers);
    /// Draws commands of the bound indirect buffer.
    static void draw(const DrawBuffers& buffers, const ContextGL& gl, const DrawProgram& program,
                     CommandRange range);
    /// The same for commands whose base instances are their numbers, after useBaseInstances().
    static void drawNumbered(const DrawBuffers& buffers, CommandRange range);
    /// Has the program take the numbers of commands from their base instances.
    static void useBaseInstances(const DrawProgram& program) noexcept;

    static int commandCount(const DrawBuffers& buffers);
    /// Draws each command in `times` instances.
    static void multiplyInstances(DrawBuffers& buffers, int times);
    /// Returns: the number of the last instance, for DrawProgram::setLastInstance().
    static int lastInstance(const DrawBuffers& buffers);
    static const DrawCommands& commands(const DrawBuffers& buffers);
    /// Returns: a number that changes with the commands and the indices, but not with what is hidden.
    static quint64 commandRevision(const DrawBuffers& buffers);
    /// Logs the errors of OpenGL before or after commands up to `end` are drawn first.
    static bool isFirstDraw(const DrawBuffers& buffers, int end);
    static void reportEarlierErrors(const DrawBuffers& buffers);
    static void reportErrorsOfDraw(DrawBuffers& buffers, int end);
};

} // namespace Atelier::Vel
