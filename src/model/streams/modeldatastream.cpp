#include <velmodel/modeldatastream.h>

namespace Atelier::Vel {

ModelDataStream::~ModelDataStream() = default;

bool ModelDataStream::isEmpty() const {
    return size() == 0;
}

quint64 ModelDataStream::byteCount() const {
    return typeSize(type()) * size();
}

void ModelDataStream::append(quint64 count, const void* src) {
    const quint64 first = size();
    resize(first + count);
    if (size() == first + count)
        setData(first, count, src);
}

quint64 ModelDataStream::typeSize(unsigned int type) {
    switch (type) {
    case 0x1400: // GL_BYTE
    case 0x1401: // GL_UNSIGNED_BYTE
        return 1;
    case 0x1402: // GL_SHORT
    case 0x1403: // GL_UNSIGNED_SHORT
    case 0x140B: // GL_HALF_FLOAT
        return 2;
    case 0x1404: // GL_INT
    case 0x1405: // GL_UNSIGNED_INT
    case 0x1406: // GL_FLOAT
        return 4;
    case 0x140A: // GL_DOUBLE
        return 8;
    default:
        return 0;
    }
}

ModelDataStreamAllocator::~ModelDataStreamAllocator() = default;

} // namespace Atelier::Vel
