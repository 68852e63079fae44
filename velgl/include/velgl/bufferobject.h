#pragma once

#include <memory>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <velgl/bindable.h>

namespace Atelier::Vel {

/// One OpenGL buffer. Its GL name is made on the first bind or upload, so it can be built without a context.
/// All operations are virtual: a client or a test may hand out its own kind from OpenGLDeviceContext.
class VELGL_EXPORT BufferObject : public Bindable {
public:
    BufferObject();
    ~BufferObject() override;
    BufferObject(const BufferObject&) = delete;
    BufferObject& operator=(const BufferObject&) = delete;

    /// The binding target, a GL enumerant such as GL_ARRAY_BUFFER; set before the first bind.
    virtual void setTarget(unsigned int target);
    virtual unsigned int target() const;

    bool bind() override;
    void unbind() override;

    /// Replaces the buffer's content by `count` 32-bit indices. `usage` is a GL usage hint such as
    /// GL_STATIC_DRAW. Returns: false when there is no context or the driver refused; the latter is logged
    /// once, as soon as the buffer has a label.
    virtual bool uploadGLuintData(const unsigned int* data, int count, unsigned int usage);
    /// The same with 16-bit indices.
    virtual bool uploadGLushortData(const unsigned short* data, int count, unsigned int usage);
    /// The same with `count` elements of `elementSize` bytes each.
    virtual bool uploadArbitraryData(const void* data, int count, unsigned int usage,
                                     unsigned long long elementSize);

    /// The size of the last successful upload, in bytes.
    virtual quint64 byteCount() const;
    /// The buffer's content as the GL has it; empty when nothing was uploaded or no context can be asked.
    virtual QByteArray readBack() const;

    /// The GL name; 0 while there is none that the current context knows.
    unsigned int name() const;
    /// The label under which debug messages name this object.
    void setLabel(const QString& label);
    QString label() const;

private:
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel
