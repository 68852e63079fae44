#include <velmodel/modeldataarray.h>

#include <cstring>

namespace Atelier::Vel {

ModelDataArray::ModelDataArray(unsigned int type, quint64 count) : _type(type) {
    resize(count);
}

ModelDataArray::~ModelDataArray() = default;

unsigned int ModelDataArray::type() const {
    return _type;
}

void ModelDataArray::setType(unsigned int type) {
    if (type == _type)
        return;
    const quint64 count = size();
    _type = type;
    resize(count);
}

bool ModelDataArray::isEmpty() const {
    return _bytes.isEmpty();
}

quint64 ModelDataArray::size() const {
    const quint64 elementSize = typeSize(_type);
    return elementSize == 0 ? 0 : static_cast<quint64>(_bytes.size()) / elementSize;
}

void ModelDataArray::resize(quint64 count) {
    _bytes.resize(static_cast<int>(typeSize(_type) * count));
}

quint64 ModelDataArray::byteCount() const {
    return static_cast<quint64>(_bytes.size());
}

void* ModelDataArray::data(quint64 first) {
    return _bytes.data() + typeSize(_type) * first;
}

void ModelDataArray::setData(quint64 first, quint64 count, const void* src) {
    std::memcpy(data(first), src, typeSize(_type) * count);
}

void ModelDataArray::append(quint64 count, const void* src) {
    _bytes.append(static_cast<const char*>(src), static_cast<int>(typeSize(_type) * count));
}

ModelDataArrayAllocator::~ModelDataArrayAllocator() = default;

ModelDataStream* ModelDataArrayAllocator::alloc(unsigned int type, quint64 count) {
    return new ModelDataArray(type, count);
}

} // namespace Atelier::Vel
