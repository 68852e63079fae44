#pragma once

#include <memory>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <velgl/bindable.h>

namespace Atelier::Vel {

class BufferObject;

/// The vertex streams of a drawable, registered by attribute name. Binding resolves the names against the
/// current program. Vertex arrays are not shared between contexts, so every context that draws gets a GL name
/// of its own.
class VELGL_EXPORT VertexArrayObject : public Bindable {
public:
    /// One registered stream.
    struct Stream {
        QString name;                        ///< attribute name in the vertex shader
        QSharedPointer<BufferObject> buffer; ///< tightly packed elements
        int components = 0;                  ///< scalar elements per vertex, 1 to 4
        unsigned int type = 0;               ///< GL scalar type of an element
    };

    VertexArrayObject();
    ~VertexArrayObject() override;
    VertexArrayObject(const VertexArrayObject&) = delete;
    VertexArrayObject& operator=(const VertexArrayObject&) = delete;

    /// Adds a stream; a second one of the same name replaces the first.
    virtual void registerBO(const QString& name, QSharedPointer<BufferObject> buffer, int components,
                            unsigned int type);

    /// The registered streams, in the order of registration.
    QVector<Stream> streams() const;
    /// The buffer that indexed draws read; null for none.
    void setIndexBuffer(QSharedPointer<BufferObject> indices);

    bool bind() override;
    void unbind() override;

    /// The label under which debug messages name this object.
    void setLabel(const QString& label);
    QString label() const;

private:
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel
