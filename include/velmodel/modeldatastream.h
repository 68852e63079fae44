#pragma once

#include <QtCore/QtGlobal>

#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

/// A growable, untyped block of memory that knows the OpenGL scalar type of its elements.
///
/// The interface of all arrays that VelModel reads and writes. Derive from it to keep them in memory of your
/// own; ModelDataArray is the implementation that is used otherwise.
/// Sizes and positions count scalar elements: never vertices, never bytes.
///
/// Errors:  a stream that cannot grow keeps its size. VelModel checks the size after each change, and reports
///          data that a stream did not take.
/// Threads: one thread at a time may use a stream.
class VELMODEL_EXPORT ModelDataStream {
public:
    ModelDataStream() = default;
    ModelDataStream(const ModelDataStream&) = default;
    ModelDataStream& operator=(const ModelDataStream&) = default;
    virtual ~ModelDataStream();

    /// The element type, a GL enumerant such as GL_FLOAT.
    virtual unsigned int type() const = 0;
    /// Declares the elements to be of another type. The bytes are not converted. The number of elements stays
    /// the same, so the number of bytes may change.
    virtual void setType(unsigned int type) = 0;
    /// Whether there are no elements.
    virtual bool isEmpty() const;
    /// The number of elements.
    virtual quint64 size() const = 0;
    /// Changes the number of elements. Elements that stay keep their values; new ones have unspecified
    /// values.
    virtual void resize(quint64 count) = 0;
    /// The number of bytes: size() times typeSize() of the type.
    virtual quint64 byteCount() const;
    /// A pointer to element `first`, valid until the next change of size. No bounds check.
    virtual void* data(quint64 first) = 0;
    /// Copies `count` elements from `src` over the elements from `first` on.
    /// Requires: the stream has these elements; this is not checked, and the stream does not grow.
    virtual void setData(quint64 first, quint64 count, const void* src) = 0;
    /// Copies `count` elements from `src` to the end. Does nothing if resize() refuses the new size.
    /// Requires: `src` does not point into this stream, unless a derived class allows it.
    virtual void append(quint64 count, const void* src);

    /// The size of one element of `type` in bytes; 0 for a code that is not a scalar type.
    static quint64 typeSize(unsigned int type);
};

/// Makes the streams that a ModelBuilder works with.
///
/// Threads: VelModel calls an allocator on the thread that calls VelModel. An allocator that several builders
///          share must allow their threads.
class VELMODEL_EXPORT ModelDataStreamAllocator {
public:
    ModelDataStreamAllocator() = default;
    ModelDataStreamAllocator(const ModelDataStreamAllocator&) = default;
    ModelDataStreamAllocator& operator=(const ModelDataStreamAllocator&) = default;
    virtual ~ModelDataStreamAllocator();

    /// Makes a stream of `count` elements of `type`, with unspecified values. A stream of another size is
    /// resized by the caller.
    /// Returns: a new stream, which the caller owns and deletes; null if none can be made. The work that
    ///          needed the stream is then given up after a warning, or the data for it is refused.
    virtual ModelDataStream* alloc(unsigned int type, quint64 count) = 0;
};

} // namespace Atelier::Vel
