#pragma once

#include <vector>

#include <velmodel/modeldataarray.h>

#include "support/guardedbytes.h"

/// Streams and allocators as clients write them.
namespace Atelier::Vel::Testing {

/// Implements only the required functions. `Bytes` provides resize(), write(), size() and data().
template<typename Bytes>
class StreamOver : public ModelDataStream {
public:
    StreamOver(unsigned int type, quint64 count) : _type(type) { _bytes.resize(count * typeSize(type)); }

    unsigned int type() const override { return _type; }
    void setType(unsigned int type) override { _type = type; }
    quint64 size() const override { return typeSize(_type) == 0 ? 0 : _bytes.size() / typeSize(_type); }
    void resize(quint64 count) override { _bytes.resize(count * typeSize(_type)); }
    void* data(quint64 first) override { return _bytes.data() + first * typeSize(_type); }
    void setData(quint64 first, quint64 count, const void* src) override {
        _bytes.write(first * typeSize(_type), src, count * typeSize(_type));
    }

private:
    unsigned int _type;
    Bytes _bytes;
};

/// Ends at a guard page: an access beyond its end crashes the process, even without a sanitizer.
class PlainStream : public StreamOver<GuardedBytes> {
public:
    using StreamOver::StreamOver;
};

class PlainAllocator : public ModelDataStreamAllocator {
public:
    ModelDataStream* alloc(unsigned int type, quint64 count) override { return new PlainStream(type, count); }
};

/// Never returns a stream.
class NullAllocator : public ModelDataStreamAllocator {
public:
    ModelDataStream* alloc(unsigned int /*type*/, quint64 /*count*/) override { return nullptr; }
};

/// Counts its allocations and can be limited.
class CountingAllocator : public ModelDataStreamAllocator {
public:
    ModelDataStream* alloc(unsigned int type, quint64 count) override {
        ++_count;
        return _left-- > 0 ? new PlainStream(type, count) : nullptr;
    }

    int count() const { return _count; }
    /// Sets the number of further streams.
    void limit(int streams) { _left = streams; }

private:
    int _count = 0;
    int _left = 1 << 30;
};

/// Returns 16-bit streams for requests of 32-bit indices.
class ShortIndexAllocator : public ModelDataStreamAllocator {
public:
    ModelDataStream* alloc(unsigned int type, quint64 count) override {
        return new PlainStream(type == 0x1405 ? 0x1403 : type, count);
    }
};

/// How a stream differs from the requested one.
enum class Lie {
    None,
    Missing,      ///< no stream
    Short,        ///< one element less
    Long,         ///< one element more
    ShortForGood, ///< one element less, and it cannot be resized
    LongForGood,  ///< one element more, and it cannot be resized
    NarrowType,   ///< elements of half the bytes
    WideType,     ///< elements of twice the bytes
    OtherType,    ///< elements of the same bytes
    NoType,       ///< elements of no scalar type
    NoData,       ///< data() returns null
    NoAppend,     ///< ignores appends
    NoResize      ///< keeps its size
};

constexpr Lie kLies[] = {Lie::Missing,     Lie::Short,      Lie::Long,     Lie::ShortForGood,
                         Lie::LongForGood, Lie::NarrowType, Lie::WideType, Lie::OtherType,
                         Lie::NoType,      Lie::NoData,     Lie::NoAppend, Lie::NoResize};

/// A `Stream` with one lie.
template<typename Stream>
class LyingStream : public Stream {
public:
    LyingStream(Lie lie, unsigned int type, quint64 count)
        : Stream(typeOf(lie, type), countOf(lie, count)), _lie(lie) {}

    void resize(quint64 count) override {
        if (_lie != Lie::NoResize && _lie != Lie::ShortForGood && _lie != Lie::LongForGood)
            Stream::resize(count);
    }
    void* data(quint64 first) override { return _lie == Lie::NoData ? nullptr : Stream::data(first); }
    void append(quint64 count, const void* src) override {
        if (_lie != Lie::NoAppend)
            Stream::append(count, src);
    }

private:
    static unsigned int typeOf(Lie lie, unsigned int type) {
        if (lie == Lie::NarrowType)
            return type == 0x1403 ? 0x1401 : 0x1403;
        if (lie == Lie::WideType)
            return type == 0x1403 ? 0x1405 : 0x140A;
        if (lie == Lie::OtherType)
            return type == 0x1403 ? 0x1402 : 0x1404;
        return lie == Lie::NoType ? 0x1407 : type;
    }
    static quint64 countOf(Lie lie, quint64 count) {
        if (lie == Lie::Long || lie == Lie::LongForGood)
            return count + 1;
        return (lie == Lie::Short || lie == Lie::ShortForGood) && count != 0 ? count - 1 : count;
    }

    Lie _lie;
};

/// Returns a `Stream` for each request; one of them has a lie.
template<typename Stream>
class LyingAllocator : public ModelDataStreamAllocator {
public:
    struct Request {
        unsigned int type = 0;
        quint64 count = 0;
    };

    ModelDataStream* alloc(unsigned int type, quint64 count) override {
        const Lie lie = _requests.size() == _liar ? _lie : Lie::None;
        _requests.push_back({type, count});
        return lie == Lie::Missing ? nullptr : new LyingStream<Stream>(lie, type, count);
    }

    /// Sets the lie of the stream of request number `liar`, counted from 0.
    void lie(std::size_t liar, Lie lie) {
        _liar = liar;
        _lie = lie;
    }
    /// All requests so far.
    const std::vector<Request>& requests() const { return _requests; }

private:
    std::vector<Request> _requests;
    std::size_t _liar = 0;
    Lie _lie = Lie::None;
};

} // namespace Atelier::Vel::Testing
