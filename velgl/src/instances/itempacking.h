#pragma once

#include <cstring>

#include <velgl/instancedata.h>
#include <velgl/instancedataplan.h>

namespace Atelier::Vel {

/// Writes the values of an item to `destination`, which has plan.stride() bytes of zeros. Values that the
/// plan does not have are ignored. Calls `onWrongSize` with each member whose value has another size, and
/// leaves the value out.
template<typename OnWrongSize>
void packItem(const InstanceDataPlan& plan, const InstanceData& item, char* destination,
              OnWrongSize onWrongSize) {
    for (const InstanceDataPlan::Member& member : plan.members()) {
        if (member.type == InstanceDataPlan::DataType::Texture || !item.hasValue(member.name))
            continue;
        const QByteArray value = item.value(member.name);
        if (value.size() == InstanceDataPlan::byteSize(member.type))
            std::memcpy(destination + member.offset, value.constData(),
                        static_cast<std::size_t>(value.size()));
        else
            onWrongSize(member);
    }
}

/// Warns of a value that packItem() leaves out.
void warnOfWrongSize(const InstanceDataPlan& plan, const InstanceDataPlan::Member& member,
                     const InstanceData& item);

} // namespace Atelier::Vel
