#pragma once

#include <atomic>

namespace Atelier::Vel {

struct DrawDataContent;
class PickingTree;

/// The picking tree of draw data, built when it is first needed.
/// Threads: several may ask at a time. Those that find no tree build one each, and the first is kept; so no
///          thread waits for another.
class PickingCache {
public:
    PickingCache() = default;
    ~PickingCache();
    /// A copy has no tree, because the content that it belongs to is going to be changed.
    PickingCache(const PickingCache& /*other*/) {}
    PickingCache& operator=(const PickingCache&) = delete;

    /// The tree of `content`, to which this object belongs.
    const PickingTree& treeOf(const DrawDataContent& content) const;

private:
    mutable std::atomic<const PickingTree*> _tree{nullptr};
};

} // namespace Atelier::Vel
