#pragma once

#include <memory>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <velgl/bindable.h>

namespace Atelier::Vel {

/// One OpenGL buffer. It can be constructed without a context: the first bind or upload makes the GL buffer.
///
/// The GL buffer lives as long as a context of its group. An upload in a context of another group makes a GL
/// buffer there as well; each group keeps its own content, as long as the contents have the same size. The
/// destructor deletes the GL buffer at once if a context of its group is current, and otherwise with the next
/// use of VelGL in such a context.
///
/// Threads: the destructor may run on any thread; see Bindable. All other functions that need a context are
/// called on its thread.
///
/// Most operations are virtual: a client or a test may return a class of its own from the factory of
/// OpenGLDeviceContext. VelGL cannot detect when such a class changes its content, so GPUModel::bounds()
/// reads it back with each call.
class VELGL_EXPORT BufferObject : public Bindable {
public:
    /// Makes no OpenGL call. The target is GL_ARRAY_BUFFER.
    BufferObject();
    ~BufferObject() override;
    BufferObject(const BufferObject&) = delete;
    BufferObject& operator=(const BufferObject&) = delete;

    /// Sets the binding target, a GL enumerant such as GL_ELEMENT_ARRAY_BUFFER. Only bind() and unbind() use
    /// it.
    /// Requires: the buffer is not bound.
    virtual void setTarget(unsigned int target);
    /// Returns: the binding target.
    virtual unsigned int target() const;

    /// Binds the buffer to its target. An index buffer (GL_ELEMENT_ARRAY_BUFFER) is bound in the vertex array
    /// that is current.
    /// Returns: false, besides the cases of Bindable::bind(), for a target that OpenGL 4.3 does not have.
    bool bind() override;
    void unbind() override;

    /// Replaces the content by `count` 32-bit indices. `data` is copied, and may be null if `count` is 0.
    /// `usage` is a GL usage hint such as GL_STATIC_DRAW. No binding changes.
    /// Requires: a current context.
    /// Content of another size drops the content that the buffer has in other groups of contexts.
    /// Returns: false, with the content unchanged, when there is no such context, `count` is negative, `data`
    /// is missing, or the size in bytes exceeds 2^63 - 1. False, with no usable content in this group, when
    /// the driver cannot make the buffer or store the data. A warning names the buffer then, once until an
    /// upload succeeds; for a buffer without a label the warning waits until it gets one.
    /// Cost: one copy to the driver and one query of the buffer's size.
    virtual bool uploadGLuintData(const unsigned int* data, int count, unsigned int usage);
    /// Replaces the content by `count` 16-bit indices; otherwise as uploadGLuintData().
    virtual bool uploadGLushortData(const unsigned short* data, int count, unsigned int usage);
    /// Replaces the content by `count` elements of `elementSize` bytes each; otherwise as uploadGLuintData().
    /// The two functions above call this one.
    virtual bool uploadArbitraryData(const void* data, int count, unsigned int usage,
                                     unsigned long long elementSize);

    /// Returns: the size of the content in bytes; 0 before the first upload and after one that the driver
    /// could not store. It is that of the last upload also where the current context does not know the
    /// buffer, see name(). Needs no context and makes no OpenGL call.
    virtual quint64 byteCount() const;
    /// Reads the content back from OpenGL. No binding changes.
    /// Returns: the bytes; empty when there are none, when they are more than a QByteArray holds (about 2
    /// GiB), and when the current context does not know the buffer.
    /// Cost: waits until the GPU has finished with the buffer, then copies it. For tests and tools.
    virtual QByteArray readBack() const;

    /// Returns: the GL name; 0 when there is none that the current context knows.
    unsigned int name() const;
    /// Sets the label under which messages of the driver and warnings name this buffer. OpenGL gets the first
    /// 255 bytes of it in UTF-8. Needs no context: a GL buffer that is made later gets the label then.
    void setLabel(const QString& label);
    /// Returns: the label; null before the first setLabel().
    QString label() const;

private:
    friend struct BufferAccess;
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel
