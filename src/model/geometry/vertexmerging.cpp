#include "geometry/vertexmerging.h"

#include <utility>

#include "geometry/bytemerging.h"
#include "geometry/cornerset.h"

namespace Atelier::Vel {

namespace {

/// Corners as keys of a CornerSet: their value numbers.
class TupleKeys {
public:
    explicit TupleKeys(const std::vector<CornerAttribute>& attributes) : _attributes(attributes) {}

    void hash(quint32 first, quint32 count, quint64* hashes) const {
        for (quint32 i = 0; i < count; ++i) {
            hashes[i] = 0;
            for (const CornerAttribute& attribute : _attributes)
                hashes[i] = mixWords(hashes[i], attribute.valueOf(first + i), 0);
        }
    }

    bool equal(quint32 a, quint32 b) const {
        for (const CornerAttribute& attribute : _attributes)
            if (attribute.valueOf(a) != attribute.valueOf(b))
                return false;
        return true;
    }

private:
    const std::vector<CornerAttribute>& _attributes;
};

} // namespace

VertexMerging::VertexMerging(std::vector<CornerAttribute> attributes, quint32 cornerCount,
                             quint32* vertexOfCorner)
    : _attributes(std::move(attributes)), _scratch(quint64{cornerCount} * sizeof(quint32)) {
    _vertexCount = mergeByBytes(_attributes, cornerCount, vertexOfCorner, _scratch.as<quint32>());
}

void VertexMerging::gather(std::size_t attribute, unsigned char* out) const {
    gatherValues(_attributes[attribute], _scratch.as<quint32>(), _vertexCount, out);
}

quint64 countSubstitutedCorners(const CornerAttribute& attribute, quint32 cornerCount) {
    quint64 count = 0;
    for (quint32 corner = 0; corner < cornerCount; ++corner)
        count += attribute.valueOf(corner) == attribute.valueCount ? 1 : 0;
    return count;
}

quint32 countIndexTuples(const std::vector<CornerAttribute>& attributes, quint32 cornerCount) {
    const ScratchBlock scratch(2 * quint64{cornerCount} * sizeof(quint32));
    CornerSet set(cornerCount);
    auto* const numbers = scratch.as<quint32>();
    return set.insertAll(TupleKeys(attributes), cornerCount, numbers, numbers + cornerCount);
}

} // namespace Atelier::Vel
