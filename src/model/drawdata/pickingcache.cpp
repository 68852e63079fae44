#include "drawdata/pickingcache.h"

#include <memory>

#include "drawdata/pickingtree.h"

namespace Atelier::Vel {

PickingCache::~PickingCache() {
    delete _tree.load();
}

const PickingTree& PickingCache::treeOf(const DrawDataContent& content) const {
    const PickingTree* tree = _tree.load();
    if (tree != nullptr)
        return *tree;
    auto built = std::make_unique<const PickingTree>(content);
    return _tree.compare_exchange_strong(tree, built.get()) ? *built.release() : *tree;
}

} // namespace Atelier::Vel
