#pragma once

#include <memory>

#include <QtCore/QObject>
#include <QtCore/QSharedPointer>
#include <QtCore/QVector>

#include <velgl/drawelementsindirectcommand.h>
#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class BufferObject;
class VertexArrayObject;

/// One drawable: vertex streams, an index buffer, and the indirect commands that draw ranges of the indices.
///
/// The setters upload nothing: the buffer of commands is made and filled with the first draw in each group of
/// contexts. The getters return what was set and make no OpenGL call.
/// Threads: draw() and readBackCommands() are called on the thread of the current context. The destructor may
/// run on any thread; see Bindable.
class VELGL_EXPORT DrawBuffers : public QObject {
    Q_OBJECT
public:
    /// Whether a command is drawn.
    enum class Visibility { Shown, Hidden };

    /// Makes a drawable without streams, indices and commands, whose mode is GL_TRIANGLES. `parent` may be
    /// null; else it deletes the drawable, until GPUModel::add() takes it over.
    DrawBuffers(QObject* parent = nullptr);
    /// Deletes the buffers of commands, each at once or with the next use of VelGL in a context of its group.
    ~DrawBuffers() override;

    /// Sets the vertex streams. Several drawables may share them: each sets its own index buffer when it
    /// draws. The label of the vertex array names this drawable in warnings.
    void setVAO(QSharedPointer<VertexArrayObject> vao);
    /// Returns: the vertex streams; null before setVAO().
    QSharedPointer<VertexArrayObject> VAO() const;

    /// Sets the index buffer, which holds `count` indices of GL type `type`: GL_UNSIGNED_BYTE,
    /// GL_UNSIGNED_SHORT or GL_UNSIGNED_INT. A drawable with another type draws nothing. A buffer without a
    /// label is labelled "indices". The commands are checked against the indices again.
    void setIndexedDraw(QSharedPointer<BufferObject> indices, int count, unsigned int type);
    /// Returns: the index buffer; null before setIndexedDraw().
    QSharedPointer<BufferObject> indexBuffer() const;
    /// Returns: the number of indices, not of bytes; 0 before setIndexedDraw().
    int indexCount() const;
    /// Returns: the GL type of an index; GL_UNSIGNED_INT before setIndexedDraw().
    unsigned int indexType() const;

    /// Sets the number of vertices in the streams. It is information for readers of the model: no draw uses
    /// it.
    void setVertexCount(unsigned int count);
    /// Returns: the number of vertices; 0 before setVertexCount().
    unsigned int vertexCount() const;

    /// Sets the GL primitive mode of all commands, such as GL_TRIANGLES.
    void setPrimitiveType(unsigned int type);
    /// Returns: the GL primitive mode.
    unsigned int primitiveType() const;

    /// Replaces all commands by a copy of the `count` commands at `commands`, which are packed without gaps.
    /// Null, or a count below 1, leaves none. All of them are shown. The next draw uploads them.
    void setDrawElementsIndirectCommands(const DrawElementsIndirectCommand* commands, int count);
    /// Returns: the commands as they were set.
    QVector<DrawElementsIndirectCommand> drawElementsIndirectCommands() const;
    /// Hides a command, or shows it again. It keeps its number, its material and its instances. Filters that
    /// it passes draw it only while it is shown.
    /// Without a command of that number it does nothing; a warning names the drawable the first time.
    /// Cost: the next draw in each group of contexts compares all commands, and changes 4 bytes of each one
    /// that was hidden or shown, in the buffers that are there.
    void setVisibility(int command, Visibility visibility);
    /// Returns: whether a command is shown; hidden if there is no such command.
    Visibility visibility(int command) const;
    /// Reads the commands back from the indirect buffer; uploads them first if no draw has done so. No
    /// binding changes.
    /// Returns: one entry for each command that was set. The count of a command that reaches beyond the
    /// indices is 0 there, and the instance count of one that is hidden. Empty when there is no context and
    /// when the driver cannot store the commands. Cost: waits until the GPU has finished with the buffer,
    /// then copies it. For tests and tools.
    QVector<DrawElementsIndirectCommand> readBackCommands();

    /// Draws commands `first` to `first + count - 1`, as far as they exist, with the current program or
    /// program pipeline. Binds the vertex array for the draw, sets the uniforms `velgl_firstCommand` and
    /// `velgl_lastInstance` of the program, and puts all bindings back. Textures and storage buffers are the
    /// caller's: GPUModel::draw() binds those as well. A command that reaches beyond the index count of
    /// setIndexedDraw(), or beyond the end of the index buffer, draws nothing; one warning counts such
    /// commands when they are uploaded. After the first draw of each command the errors of OpenGL are taken
    /// and logged. Primitive restart of the client is off while points, lines, triangles, their forms with
    /// adjacency or patches are drawn, so that no index of theirs is left out; strips, loops and fans are
    /// divided as the client has set it. Requires: a current context and program, a vertex array, and an
    /// index buffer with content; else it draws nothing. Cost: one glMultiDrawElementsIndirect for all
    /// commands, or one for each command where the driver has no shader draw parameters, and two queries of
    /// primitive restart for modes where it is turned off. A change of the commands, or of the index buffer
    /// or its size, costs one upload.
    void draw(int first, int count);

private:
    friend struct DrawBuffersAccess;

    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel
