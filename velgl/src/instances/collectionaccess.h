#pragma once

#include <velgl/instancedatacollection.h>

namespace Atelier::Vel {

/// Gives VelGL access to the buffers and the changes of a collection.
struct CollectionAccess {
    /// Returns: the buffer that bindStorage() binds in the current context, filled if need be; 0 where that
    /// returns false.
    static unsigned int storage(InstanceDataCollection& collection, qint64 itemCount) {
        return collection.storage(itemCount);
    }
    /// Returns: a number that grows with each change of an item.
    static quint64 revision(const InstanceDataCollection& collection);
    /// Returns: a number that grows with each change of an item's textures.
    static quint64 textureRevision(const InstanceDataCollection& collection);
};

} // namespace Atelier::Vel
