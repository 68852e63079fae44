#pragma once

#include <memory>

#include <velmodel/modeldatastream.h>

namespace Atelier::Vel {

class ScratchBlock;

/// A stream in memory: packed elements in native byte order, at most 2 147 483 647 bytes.
///
/// A request for more is refused as a whole: the stream stays unchanged, and its size shows that.
/// Copies are cheap: they share their bytes until one of them is written to or hands out a pointer.
/// Errors:  throws std::bad_alloc when memory runs out.
/// Threads: one thread at a time may use an array and the copies that share its bytes.
class VELMODEL_EXPORT ModelDataArray : public ModelDataStream {
public:
    /// `count` elements of `type`, which defaults to GL_FLOAT. Their values are unspecified. The array is
    /// empty if it cannot hold that many.
    ModelDataArray(unsigned int type = 0x1406, quint64 count = 0);
    ModelDataArray(const ModelDataArray&) = default;
    ModelDataArray& operator=(const ModelDataArray&) = default;
    ~ModelDataArray() override;

    /// The type that was set last, which may be no scalar type.
    unsigned int type() const override;
    /// Does nothing if the same number of elements of the new type would be too long.
    void setType(unsigned int type) override;
    /// Whether there are no bytes. Cost: constant.
    bool isEmpty() const override;
    /// The number of elements; 0 if the type is not a scalar type.
    quint64 size() const override;
    /// Does nothing if the array cannot hold `count` elements. A smaller size frees no memory.
    /// Cost: amortised linear in the number of bytes added. On Linux, the pages of a long array move without
    /// being copied, unless a copy shares them.
    void resize(quint64 count) override;
    /// Allocates memory for `count` elements, so that appending up to that number does not move the data.
    /// Does nothing if the array cannot hold that many.
    void reserve(quint64 count);
    /// The number of bytes in use.
    quint64 byteCount() const override;
    /// A pointer to element `first`. It is valid until the array grows or is copied. No bounds check.
    /// Cost: constant; linear in the bytes if they are shared with a copy.
    void* data(quint64 first) override;
    /// `src` may point into this array.
    void setData(quint64 first, quint64 count, const void* src) override;
    /// Does nothing if the array cannot hold the result. `src` may point into this array.
    /// Cost: amortised linear in `count`.
    void append(quint64 count, const void* src) override;

    /// Whether `count` elements of `type` fit into one array. True for a type that is not a scalar type,
    /// whose elements have no bytes.
    static bool canHold(unsigned int type, quint64 count);

private:
    /// The offset of `bytes` in this array; kNotOwn if they are not in this array.
    quint64 placeOf(const void* bytes) const;
    bool isShared() const;
    /// Moves the array to a block of its own of exactly `capacity` bytes.
    void moveTo(quint64 capacity);
    /// Makes the array the only owner of a block of at least `bytes` bytes. A block that has to grow gets
    /// spare capacity.
    void ensureCapacity(quint64 bytes);
    /// The first byte, in a block that no copy shares.
    char* ownBytes();
    void resizeBytes(quint64 bytes);

    quint32 _type;
    quint64 _byteCount = 0;
    quint64 _capacity = 0;
    std::shared_ptr<ScratchBlock> _block; ///< shared with copies
};

/// Makes ModelDataArrays. It has no state: any number of threads may use one.
class VELMODEL_EXPORT ModelDataArrayAllocator : public ModelDataStreamAllocator {
public:
    ~ModelDataArrayAllocator() override;
    /// Returns: null if `count` elements do not fit into one array. Throws std::bad_alloc when memory runs
    ///          out.
    ModelDataStream* alloc(unsigned int type, quint64 count) override;
};

} // namespace Atelier::Vel
