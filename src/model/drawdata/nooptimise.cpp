// Replaces optimise.cpp if the library is built without meshoptimizer.

#include "drawdata/drawdatacontent.h"
#include "drawdata/optimise.h"

namespace Atelier::Vel {

bool canOptimise() {
    return false;
}

std::shared_ptr<DrawDataContent> optimisedContent(const DrawDataContent& /*content*/,
                                                  const WorkMeter& /*meter*/) {
    return nullptr;
}

DrawData::VertexCacheStatistics cacheStatistics(const DrawDataContent& /*content*/) {
    return {};
}

} // namespace Atelier::Vel
