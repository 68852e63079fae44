#pragma once

#include <memory>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <velgl/bindable.h>

namespace Atelier::Vel {

class BufferObject;

/// The vertex streams of a drawable, registered by attribute name.
///
/// Each bind resolves the names against the program that is current then, so the program must be current
/// before the vertex array is bound, and one vertex array can serve several programs. A stream that the
/// program does not read is left out.
///
/// Contexts do not share vertex arrays: each context in which this object is bound gets a GL object of its
/// own. The buffers of the streams are shared as BufferObject says.
///
/// Threads: the destructor may run on any thread; all other functions are called on the thread of the current
/// context, or before there is one.
class VELGL_EXPORT VertexArrayObject : public Bindable {
public:
    /// One registered stream: the values of one attribute, vertex after vertex without gaps.
    struct Stream {
        QString name;                        ///< attribute name in the vertex shader
        QSharedPointer<BufferObject> buffer; ///< may be null; the stream is left out then
        int components = 0;                  ///< scalar elements per vertex, 1 to 4
        unsigned int type = 0;               ///< GL scalar type of an element, such as GL_FLOAT
    };

    /// Makes no OpenGL call.
    VertexArrayObject();
    ~VertexArrayObject() override;
    VertexArrayObject(const VertexArrayObject&) = delete;
    VertexArrayObject& operator=(const VertexArrayObject&) = delete;

    /// Adds a stream; one of the same name replaces the earlier one in its place. A buffer without a label is
    /// labelled with `name`. The stream is used from the next bind() on; only then are `components` and
    /// `type` checked.
    virtual void registerBO(const QString& name, QSharedPointer<BufferObject> buffer, int components,
                            unsigned int type);

    /// Returns: the registered streams, in the order of registration.
    QVector<Stream> streams() const;
    /// Sets the buffer that indexed draws read, from the next bind() on; null for none.
    void setIndexBuffer(QSharedPointer<BufferObject> indices);

    /// Binds the vertex array with its index buffer and the streams that the current program reads. An
    /// element becomes a float of the same value for a float attribute; integer attributes take integer types
    /// only, and double attributes GL_DOUBLE only. A stream whose type does not suit the attribute is left
    /// out, after one warning for its name. One whose buffer is empty, or belongs to another group of
    /// contexts, is left out.
    /// Returns: see Bindable::bind(); streams that were left out do not make it false.
    /// Cost: two queries of the program per stream. The GL object is changed only where the result differs
    /// from that of the last bind.
    bool bind() override;
    void unbind() override;

    /// Sets the label under which messages of the driver and warnings name this object. OpenGL gets the first
    /// 255 bytes of it in UTF-8, with the next bind().
    void setLabel(const QString& label);
    /// Returns: the label; null before the first setLabel().
    QString label() const;

private:
    friend struct VertexArrayAccess;

    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel
