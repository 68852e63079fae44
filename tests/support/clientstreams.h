#pragma once

#include <cstring>
#include <vector>

#include <velmodel/modeldataarray.h>

/// Streams and allocators as clients write them.
namespace Atelier::Vel::Testing {

/// Implements nothing but what it has to.
class PlainStream : public ModelDataStream {
public:
    PlainStream(unsigned int type, quint64 count) : _type(type) { resize(count); }

    unsigned int type() const override { return _type; }
    void setType(unsigned int type) override { _type = type; }
    quint64 size() const override { return typeSize(_type) == 0 ? 0 : _bytes.size() / typeSize(_type); }
    void resize(quint64 count) override { _bytes.resize(count * typeSize(_type)); }
    void* data(quint64 first) override { return _bytes.data() + first * typeSize(_type); }
    void setData(quint64 first, quint64 count, const void* src) override {
        if (count * typeSize(_type) != 0)
            std::memcpy(data(first), src, count * typeSize(_type));
    }

private:
    unsigned int _type;
    // Exactly as long as it says, so that a sanitizer sees every step beyond the end.
    std::vector<unsigned char> _bytes;
};

class PlainAllocator : public ModelDataStreamAllocator {
public:
    ModelDataStream* alloc(unsigned int type, quint64 count) override { return new PlainStream(type, count); }
};

/// Never has a stream to give.
class NullAllocator : public ModelDataStreamAllocator {
public:
    ModelDataStream* alloc(unsigned int /*type*/, quint64 /*count*/) override { return nullptr; }
};

/// Counts what it gives, and can stop giving.
class CountingAllocator : public ModelDataStreamAllocator {
public:
    ModelDataStream* alloc(unsigned int type, quint64 count) override {
        ++_count;
        return _left-- > 0 ? new PlainStream(type, count) : nullptr;
    }

    int count() const { return _count; }
    /// How many more streams it gives.
    void limit(int streams) { _left = streams; }

private:
    int _count = 0;
    int _left = 1 << 30;
};

/// Gives 16-bit streams where 32-bit indices are asked for.
class ShortIndexAllocator : public ModelDataStreamAllocator {
public:
    ModelDataStream* alloc(unsigned int type, quint64 count) override {
        return new PlainStream(type == 0x1405 ? 0x1403 : type, count);
    }
};

} // namespace Atelier::Vel::Testing
