#pragma once

#include <QtCore/QSet>

#include <velgl/gpumodel.h>

#include "context/contextgl.h"
#include "drawing/modeldrawable.h"

namespace Atelier::Vel {

/// Whether the buffers of a model have their content in the context that draws, and the function that fills
/// them again where they have not.
class ModelContent {
public:
    void setRefill(GPUModel::Refill refill);
    const GPUModel::Refill& refill() const { return _refill; }

    /// Returns: whether each buffer that has content has it in the current context `gl`.
    static bool isComplete(const ContextGL& gl, const ModelDrawables& drawables);
    /// The same after the buffers were filled again if need be. Where that is not possible, it warns once for
    /// each group of contexts, and does not try there again.
    bool isReady(const ContextGL& gl, GPUModel& model, const ModelDrawables& drawables);

private:
    bool fill(GPUModel& model) const;

    GPUModel::Refill _refill;
    QSet<quint64> _failedGroups; // ShareGroup::serial()
};

} // namespace Atelier::Vel
