#include "geometry/merging/indexblocks.h"

#include "geometry/allbelow.h"

namespace Atelier::Vel {

namespace {

/// Whether the list has an entry for each of the corners, and each entry is the number of a value.
bool allHaveValues(const CornerAttribute& attribute, quint32 first, quint32 count) {
    return attribute.indices != nullptr && attribute.indexStep == 1 && attribute.valueCount != 0 &&
           quint64{first} + count <= attribute.indexCount &&
           allBelow(attribute.indices + first, count, static_cast<quint32>(attribute.valueCount));
}

} // namespace

const quint32* IndexBlock::read(const CornerAttribute& attribute, quint32 first, quint32 count) {
    if (allHaveValues(attribute, first, count))
        return attribute.indices + first;
    for (quint32 i = 0; i < count; ++i) {
        const quint64 value = attribute.valueOf(quint64{first} + i);
        _substitutedCorners += value == attribute.valueCount ? 1 : 0;
        _numbers[i] = static_cast<quint32>(value);
    }
    return _numbers.data();
}

} // namespace Atelier::Vel
