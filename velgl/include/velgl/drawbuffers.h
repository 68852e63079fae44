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

/// One drawable: vertex streams, an index buffer and the indirect commands that draw stretches of it.
class VELGL_EXPORT DrawBuffers : public QObject {
    Q_OBJECT
public:
    DrawBuffers(QObject* parent = nullptr);
    ~DrawBuffers() override;

    void setVAO(QSharedPointer<VertexArrayObject> vao);
    QSharedPointer<VertexArrayObject> VAO() const;

    /// `count` indices of GL type `type` (GL_UNSIGNED_SHORT or GL_UNSIGNED_INT) in `indices`.
    void setIndexedDraw(QSharedPointer<BufferObject> indices, int count, unsigned int type);
    QSharedPointer<BufferObject> indexBuffer() const;
    int indexCount() const;
    unsigned int indexType() const;

    void setVertexCount(unsigned int count);
    unsigned int vertexCount() const;

    /// A GL primitive mode such as GL_TRIANGLES.
    void setPrimitiveType(unsigned int type);
    unsigned int primitiveType() const;

    /// Copies `count` packed commands; they reach the GPU with the first draw.
    void setDrawElementsIndirectCommands(const DrawElementsIndirectCommand* commands, int count);
    QVector<DrawElementsIndirectCommand> drawElementsIndirectCommands() const;
    /// The commands as the GPU's indirect buffer holds them; uploads them first when that has not happened
    /// yet.
    QVector<DrawElementsIndirectCommand> readBackCommands();

    /// Draws commands `first` to `first + count - 1` with the current program.
    void draw(int first, int count);

private:
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel
