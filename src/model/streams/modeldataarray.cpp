#include <velmodel/modeldataarray.h>

#include <cstring>
#include <functional>
#include <limits>

#include "streams/hugepages.h"

namespace Atelier::Vel {

namespace {

// A byte array keeps a header and a terminator in the same signed 32-bit size, so the last bytes cannot be
// had.
constexpr quint64 kMaxBytes = std::numeric_limits<qint32>::max() - sizeof(QArrayData) - 1;

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
    const auto* source = static_cast<const char*>(src);
    const int bytes = static_cast<int>(typeSize(_type) * count);
    const std::less<> before;
    const bool isOwn =
        !before(source, _bytes.constData()) && before(source, _bytes.constData() + _bytes.size());
    const int capacity = _bytes.capacity();
    // Growing may move the bytes that an own source points to.
    if (isOwn)
        _bytes.append(QByteArray(source, bytes));
    else
        _bytes.append(source, bytes);
    if (_bytes.capacity() != capacity)
        adviseHugePages(_bytes.data(), static_cast<std::size_t>(_bytes.capacity()));
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
