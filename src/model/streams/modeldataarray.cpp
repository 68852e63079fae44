#include <velmodel/modeldataarray.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "scratchblock.h"

namespace Atelier::Vel {

namespace {

constexpr quint64 kMaxBytes = std::numeric_limits<qint32>::max();

/// Room for an array that has outgrown its block. Room that is never used is never touched and costs nothing,
/// so an array that is long already gets all there is: it takes its memory twice while it moves.
quint64 generousRoom(quint64 bytes) {
    constexpr quint64 kLong = quint64{512} << 10;
    return bytes > kLong ? kMaxBytes : bytes * 4;
}

/// The same where addresses are scarce.
quint64 modestRoom(quint64 bytes) {
    return std::min(bytes + bytes / 2, kMaxBytes);
}

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
    return ownBytes(_byteCount) + typeSize(_type) * first;
}

void ModelDataArray::setData(quint64 first, quint64 count, const void* src) {
    if (count != 0)
        std::memmove(data(first), src, typeSize(_type) * count);
}

void ModelDataArray::append(quint64 count, const void* src) {
    // Each alone first, so that their sum cannot wrap.
    if (count == 0 || !canHold(_type, count) || !canHold(_type, size() + count))
        return;
    const quint64 bytes = typeSize(_type) * count;
    const quint64 total = _byteCount + bytes;
    // The block before stays alive until the end: `src` may point into it.
    std::shared_ptr<ScratchBlock> before;
    if (total > _capacity)
        before = growTo(total);
    if (bytes != 0)
        std::memcpy(ownBytes(total) + _byteCount, src, bytes);
    _byteCount = total;
}

bool ModelDataArray::canHold(unsigned int type, quint64 count) {
    const quint64 elementSize = typeSize(type);
    return elementSize == 0 || count <= kMaxBytes / elementSize;
}

std::shared_ptr<ScratchBlock> ModelDataArray::moveTo(quint64 capacity) {
    auto block = std::make_shared<ScratchBlock>(capacity, ScratchBlock::Content::Unspecified);
    if (_byteCount != 0)
        std::memcpy(block->as<char>(), _block->as<char>(), _byteCount);
    _capacity = capacity;
    _block.swap(block);
    return block;
}

std::shared_ptr<ScratchBlock> ModelDataArray::growTo(quint64 bytes) {
    const quint64 room = generousRoom(bytes);
    try {
        return moveTo(room);
    } catch (const std::bad_alloc&) {
        if (room < kMaxBytes)
            throw;
        return moveTo(modestRoom(bytes));
    }
}

char* ModelDataArray::ownBytes(quint64 bytes) {
    if (_block == nullptr || _block.use_count() > 1) {
        try {
            moveTo(_capacity);
        } catch (const std::bad_alloc&) {
            if (_capacity == bytes)
                throw;
            moveTo(bytes); // where addresses are scarce
        }
    }
    return _block->as<char>();
}

void ModelDataArray::resizeBytes(quint64 bytes) {
    if (bytes > _capacity)
        moveTo(bytes);
    _byteCount = bytes;
}

ModelDataArrayAllocator::~ModelDataArrayAllocator() = default;

ModelDataStream* ModelDataArrayAllocator::alloc(unsigned int type, quint64 count) {
    return ModelDataArray::canHold(type, count) ? new ModelDataArray(type, count) : nullptr;
}

} // namespace Atelier::Vel
