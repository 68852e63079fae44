#pragma once

#include <QtCore/QtGlobal>

#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

/// A growable, untyped block of memory that knows the OpenGL scalar type of its elements.
/// Sizes and positions count scalar elements: never vertices, never bytes.
class VELMODEL_EXPORT ModelDataStream {
public:
    ModelDataStream() = default;
    ModelDataStream(const ModelDataStream&) = default;
    ModelDataStream& operator=(const ModelDataStream&) = default;
    virtual ~ModelDataStream();

    /// The element type, a GL enumerant such as GL_FLOAT.
    virtual unsigned int type() const = 0;
    /// Reads the same bytes as elements of another type; the element count stays.
    virtual void setType(unsigned int type) = 0;
    virtual bool isEmpty() const;
    virtual quint64 size() const = 0;
    /// Growth leaves the new elements unspecified.
    virtual void resize(quint64 count) = 0;
    virtual quint64 byteCount() const;
    /// A pointer to element `first`, valid until the next change of size. No bounds check.
    virtual void* data(quint64 first) = 0;
    /// Copies `count` elements from `src` over the elements from `first` on. No bounds check, no growth.
    virtual void setData(quint64 first, quint64 count, const void* src) = 0;
    /// Copies `count` elements from `src` behind the last one; nothing where resize() refuses.
    virtual void append(quint64 count, const void* src);

    /// The size of one element in bytes; 0 for a code that is no scalar type.
    static quint64 typeSize(unsigned int type);
};

/// Makes the streams that a ModelBuilder works with.
class VELMODEL_EXPORT ModelDataStreamAllocator {
public:
    ModelDataStreamAllocator() = default;
    ModelDataStreamAllocator(const ModelDataStreamAllocator&) = default;
    ModelDataStreamAllocator& operator=(const ModelDataStreamAllocator&) = default;
    virtual ~ModelDataStreamAllocator();

    /// A new stream of `count` elements that the caller owns; null when none can be made.
    virtual ModelDataStream* alloc(unsigned int type, quint64 count) = 0;
};

} // namespace Atelier::Vel
