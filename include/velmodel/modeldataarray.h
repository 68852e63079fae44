#pragma once

#include <memory>

#include <velmodel/modeldatastream.h>

namespace Atelier::Vel {

class ScratchBlock;

/// A stream in memory: packed elements in native byte order, at most 2 147 483 647 bytes.
/// What would make it longer is refused whole: the stream stays as it was, and its size tells.
/// Copies share their bytes until one of them is written to.
class VELMODEL_EXPORT ModelDataArray : public ModelDataStream {
public:
    /// `type` defaults to GL_FLOAT. The elements are unspecified; a refused `count` gives an empty stream.
    ModelDataArray(unsigned int type = 0x1406, quint64 count = 0);
    ModelDataArray(const ModelDataArray&) = default;
    ModelDataArray& operator=(const ModelDataArray&) = default;
    ~ModelDataArray() override;

    unsigned int type() const override;
    /// Refused, type included, when the same number of elements of the new type would be too long.
    void setType(unsigned int type) override;
    bool isEmpty() const override;
    /// 0 for a code that is no scalar type.
    quint64 size() const override;
    void resize(quint64 count) override;
    /// Makes room for `count` elements, so that appending up to there moves nothing. Ignored when that is
    /// more than a stream can hold.
    void reserve(quint64 count);
    quint64 byteCount() const override;
    void* data(quint64 first) override;
    void setData(quint64 first, quint64 count, const void* src) override;
    /// `src` may point into this stream.
    void append(quint64 count, const void* src) override;

    /// Whether `count` elements of `type` fit into one stream.
    static bool canHold(unsigned int type, quint64 count);

private:
    /// The offset of `bytes` in this array; kNotOwn where they are not this array's.
    quint64 placeOf(const void* bytes) const;
    bool isShared() const;
    /// Gives the array a block of its own with room for exactly `capacity` bytes.
    void moveTo(quint64 capacity);
    /// Gives the array a block of its own with room for `bytes` bytes and, if it has to grow, for more.
    void ensureCapacity(quint64 bytes);
    /// The bytes, shared with no copy.
    char* ownBytes();
    void resizeBytes(quint64 bytes);

    quint32 _type;
    quint64 _byteCount = 0;
    quint64 _capacity = 0;
    std::shared_ptr<ScratchBlock> _block; ///< shared with copies
};

/// Makes ModelDataArrays.
class VELMODEL_EXPORT ModelDataArrayAllocator : public ModelDataStreamAllocator {
public:
    ~ModelDataArrayAllocator() override;
    /// Null when `count` elements do not fit into one stream.
    ModelDataStream* alloc(unsigned int type, quint64 count) override;
};

} // namespace Atelier::Vel
