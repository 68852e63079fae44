#include <velmodel/modeldataarray.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>

#include "memory/growth.h"
#include "memory/scratchblock.h"

namespace Atelier::Vel {

namespace {

constexpr quint64 kMaxBytes = std::numeric_limits<qint32>::max();

constexpr quint64 kNotOwn = ~quint64{0};

} // namespace

ModelDataArray::ModelDataArray(unsigned int type, quint64 count) : _type(type) {
    if (canHold(type, count))
        resizeBytes(typeSize(type) * count);
}

ModelDataArray::~ModelDataArray() = default;

unsigned int ModelDataArray::type() const {
    return _type;
}

void ModelDataArray::setType(unsigned int type) {
    const quint64 count = size();
    if (type == _type || !canHold(type, count))
        return;
    resizeBytes(typeSize(type) * count);
    _type = type;
}

bool ModelDataArray::isEmpty() const {
    return _byteCount == 0;
}

quint64 ModelDataArray::size() const {
    const quint64 elementSize = typeSize(_type);
    return elementSize == 0 ? 0 : _byteCount / elementSize;
}

void ModelDataArray::resize(quint64 count) {
    if (canHold(_type, count))
        resizeBytes(typeSize(_type) * count);
}

void ModelDataArray::reserve(quint64 count) {
    if (canHold(_type, count) && typeSize(_type) * count > _capacity)
        moveTo(typeSize(_type) * count);
}

quint64 ModelDataArray::byteCount() const {
    return _byteCount;
}

void* ModelDataArray::data(quint64 first) {
    return ownBytes() + typeSize(_type) * first;
}

void ModelDataArray::setData(quint64 first, quint64 count, const void* src) {
    if (count != 0)
        std::memmove(data(first), src, typeSize(_type) * count);
}

void ModelDataArray::append(quint64 count, const void* src) {
    // Checks `count` alone first, so that the sum cannot wrap.
    if (count == 0 || !canHold(_type, count) || !canHold(_type, size() + count))
        return;
    const quint64 bytes = typeSize(_type) * count;
    if (bytes == 0)
        return;
    // `src` may point into this array, whose bytes move when it grows.
    const quint64 place = placeOf(src);
    ensureCapacity(_byteCount + bytes);
    std::memcpy(_block->as<char>() + _byteCount, place == kNotOwn ? src : _block->as<char>() + place, bytes);
    _byteCount += bytes;
}

bool ModelDataArray::canHold(unsigned int type, quint64 count) {
    const quint64 elementSize = typeSize(type);
    return elementSize == 0 || count <= kMaxBytes / elementSize;
}

quint64 ModelDataArray::placeOf(const void* bytes) const {
    const std::less<> isBefore;
    const char* const begin = _block ? _block->as<char>() : nullptr;
    const auto* const place = static_cast<const char*>(bytes);
    const bool isOwn = begin != nullptr && !isBefore(place, begin) && isBefore(place, begin + _byteCount);
    return isOwn ? static_cast<quint64>(place - begin) : kNotOwn;
}

void ModelDataArray::moveTo(quint64 capacity) {
    const auto block = std::make_shared<ScratchBlock>(capacity, ScratchBlock::Content::Unspecified);
    if (_byteCount != 0)
        std::memcpy(block->as<char>(), _block->as<char>(), _byteCount);
    _capacity = capacity;
    _block = block;
}

bool ModelDataArray::isShared() const {
    return _block.use_count() > 1;
}

void ModelDataArray::ensureCapacity(quint64 bytes) {
    if (bytes <= _capacity) {
        if (isShared())
            moveTo(bytes);
        return;
    }
    growCapacity(bytes, kMaxBytes, [this](quint64 capacity) {
        if (_block != nullptr && !isShared() && _block->grow(capacity))
            _capacity = capacity;
        else
            moveTo(capacity);
    });
}

char* ModelDataArray::ownBytes() {
    if (_block == nullptr || isShared())
        moveTo(_byteCount);
    return _block->as<char>();
}

void ModelDataArray::resizeBytes(quint64 bytes) {
    if (bytes > _capacity && _byteCount == 0)
        moveTo(bytes);
    else if (bytes > _capacity)
        ensureCapacity(bytes);
    _byteCount = bytes;
}

ModelDataArrayAllocator::~ModelDataArrayAllocator() = default;

ModelDataStream* ModelDataArrayAllocator::alloc(unsigned int type, quint64 count) {
    return ModelDataArray::canHold(type, count) ? new ModelDataArray(type, count) : nullptr;
}

} // namespace Atelier::Vel
