#include <velmodel/modeldatastream.h>

#include "glconstants.h"

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
    case kGlByte:
    case kGlUnsignedByte:
        return 1;
    case kGlShort:
    case kGlUnsignedShort:
    case kGlHalfFloat:
        return 2;
    case kGlInt:
    case kGlUnsignedInt:
    case kGlFloat:
        return 4;
    case kGlDouble:
        return 8;
    default:
        return 0;
    }
}

ModelDataStreamAllocator::~ModelDataStreamAllocator() = default;

} // namespace Atelier::Vel
