#include <velmodel/modeldataarray.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "streams/hugepages.h"

namespace Atelier::Vel {

namespace {

// A byte array keeps a header and a terminator in the same signed 32-bit size, so the last bytes cannot be
// had.
constexpr quint64 kMaxBytes = std::numeric_limits<qint32>::max() - sizeof(QArrayData) - 1;

quint64 generousRoom(quint64 bytes) {
    constexpr quint64 kLong = quint64{1} << 18;
    constexpr quint64 kRoomForLong = quint64{1} << 24;
    return std::max(bytes * 4, bytes < kLong ? 0 : kRoomForLong);
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
    _type = type;
    resizeBytes(typeSize(type) * count);
}

bool ModelDataArray::isEmpty() const {
    return _bytes.isEmpty();
}

quint64 ModelDataArray::size() const {
    const quint64 elementSize = typeSize(_type);
    return elementSize == 0 ? 0 : static_cast<quint64>(_bytes.size()) / elementSize;
}

void ModelDataArray::resize(quint64 count) {
    if (canHold(_type, count))
        resizeBytes(typeSize(_type) * count);
}

quint64 ModelDataArray::byteCount() const {
    return static_cast<quint64>(_bytes.size());
}

void* ModelDataArray::data(quint64 first) {
    return _bytes.data() + typeSize(_type) * first;
}

void ModelDataArray::setData(quint64 first, quint64 count, const void* src) {
    if (count != 0)
        std::memmove(data(first), src, typeSize(_type) * count);
}

void ModelDataArray::append(quint64 count, const void* src) {
    if (count == 0 || !canHold(_type, size() + count))
        return;
    const quint64 bytes = typeSize(_type) * count;
    // What was there before stays alive until the end: `src` may point into it.
    const QByteArray before = makeRoom(byteCount() + bytes);
    _bytes.append(static_cast<const char*>(src), static_cast<int>(bytes));
}

QByteArray ModelDataArray::makeRoom(quint64 bytes) {
    QByteArray before;
    if (bytes <= static_cast<quint64>(_bytes.capacity()))
        return before;
    // A fresh block can be told to use large pages before anything touches it; a reallocated one cannot. Room
    // that is never used is never touched and costs nothing, so there is plenty of it.
    before.reserve(static_cast<int>(std::min(generousRoom(bytes), kMaxBytes)));
    adviseHugePages(before.data(), static_cast<std::size_t>(before.capacity()));
    before.append(_bytes);
    before.swap(_bytes);
    return before;
}

bool ModelDataArray::canHold(unsigned int type, quint64 count) {
    const quint64 elementSize = typeSize(type);
    return elementSize == 0 || count <= kMaxBytes / elementSize;
}

void ModelDataArray::resizeBytes(quint64 bytes) {
    const int capacity = _bytes.capacity();
    _bytes.resize(static_cast<int>(bytes));
    if (_bytes.capacity() != capacity)
        adviseHugePages(_bytes.data(), static_cast<std::size_t>(_bytes.capacity()));
}

ModelDataArrayAllocator::~ModelDataArrayAllocator() = default;

ModelDataStream* ModelDataArrayAllocator::alloc(unsigned int type, quint64 count) {
    return ModelDataArray::canHold(type, count) ? new ModelDataArray(type, count) : nullptr;
}

} // namespace Atelier::Vel
