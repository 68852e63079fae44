#pragma once

#include <velgl/vertexarrayobject.h>

#include "context/contextgl.h"
#include "objects/linkedprogram.h"

namespace Atelier::Vel {

/// Binds a vertex array in two steps: the first one may throw, the second one only calls OpenGL.
struct VertexArrayAccess {
    /// Makes the GL object and finds the streams that the program reads.
    /// Returns: false when OpenGL cannot make a vertex array.
    static bool prepare(VertexArrayObject& vao, const ContextGL& gl, const DrawProgram& program);
    /// Binds the array, with the buffer of that name for its indices.
    /// Requires: prepare() has succeeded in the same context.
    static void bind(VertexArrayObject& vao, const ContextGL& gl, unsigned int indices) noexcept;

    /// The same as VertexArrayObject::streams(), without a copy.
    static const QVector<VertexArrayObject::Stream>& streams(const VertexArrayObject& vao);
    /// Returns: what was given to VertexArrayObject::setIndexBuffer().
    static const QSharedPointer<BufferObject>& indexBuffer(const VertexArrayObject& vao);
};

} // namespace Atelier::Vel
