#pragma once

#include <velgl/instancedatacollection.h>

namespace Atelier::Vel {

/// Gives VelGL access to the buffers of a collection.
struct CollectionAccess {
    /// Returns: the buffer that bindStorage() binds in the current context, filled if need be; 0 where that
    /// returns false.
    static unsigned int storage(InstanceDataCollection& collection, int itemCount) {
        return collection.storage(itemCount);
    }
};

} // namespace Atelier::Vel
