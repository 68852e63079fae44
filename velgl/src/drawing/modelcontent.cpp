#include "drawing/modelcontent.h"

#include <algorithm>

#include <velgl/bufferobject.h>
#include <velgl/vertexarrayobject.h>

#include "context/currentcontext.h"
#include "context/log.h"

namespace Atelier::Vel {

namespace {

// Requires: a context is current.
bool hasLostContent(const QSharedPointer<BufferObject>& buffer) {
    return buffer && buffer->byteCount() > 0 && buffer->name() == 0;
}

bool hasLostContent(const DrawBuffers& buffers) {
    if (hasLostContent(buffers.indexBuffer()))
        return true;
    const QVector<VertexArrayObject::Stream> streams =
        buffers.VAO() ? buffers.VAO()->streams() : QVector<VertexArrayObject::Stream>();
    return std::any_of(streams.cbegin(), streams.cend(),
                       [](const VertexArrayObject::Stream& stream) { return hasLostContent(stream.buffer); });
}

} // namespace

void ModelContent::setRefill(GPUModel::Refill refill) {
    _refill = std::move(refill);
    _failedGroups.clear();
}

bool ModelContent::isComplete(const ModelDrawables& drawables) {
    return std::none_of(drawables.cbegin(), drawables.cend(),
                        [](const auto& drawable) { return hasLostContent(*drawable->buffers); });
}

bool ModelContent::isReady(const ContextGL& gl, GPUModel& model, const ModelDrawables& drawables) {
    if (isComplete(drawables))
        return true;
    const quint64 group = gl.group()->serial();
    if (_failedGroups.contains(group))
        return false;
    if (fill(model) && isComplete(drawables))
        return true;
    _failedGroups.insert(group);
    qCWarning(
        velglLog,
        "Model '%s' lost its context: its buffers have no content in the current one, so it is not drawn",
        qPrintable(model.label()));
    return false;
}

bool ModelContent::fill(GPUModel& model) const {
    if (!_refill)
        return false;
    const ContextScope::Pause pause;
    const GPUModel::Refill function = _refill; // it may be replaced while it runs
    return function(model);
}

} // namespace Atelier::Vel
