#include "drawing/modelcontent.h"

#include <algorithm>

#include "context/currentcontext.h"
#include "context/log.h"
#include "drawing/drawbuffersaccess.h"
#include "objects/bufferaccess.h"
#include "objects/vertexarrayaccess.h"

namespace Atelier::Vel {

namespace {

bool hasLostContent(const ContextGL& gl, const BufferObject* buffer) {
    return buffer && buffer->byteCount() > 0 && BufferAccess::nameIn(gl, *buffer) == 0;
}

bool hasLostContent(const ContextGL& gl, const DrawBuffers& buffers) {
    if (hasLostContent(gl, DrawBuffersAccess::indexBuffer(buffers)))
        return true;
    const VertexArrayObject* const vao = DrawBuffersAccess::vertexArray(buffers);
    if (!vao)
        return false;
    const QVector<VertexArrayObject::Stream>& streams = VertexArrayAccess::streams(*vao);
    return std::any_of(streams.cbegin(), streams.cend(), [&](const VertexArrayObject::Stream& stream) {
        return hasLostContent(gl, stream.buffer.data());
    });
}

} // namespace

void ModelContent::setRefill(GPUModel::Refill refill) {
    _refill = std::move(refill);
    _failedGroups.clear();
}

bool ModelContent::isComplete(const ContextGL& gl, const ModelDrawables& drawables) {
    return std::none_of(drawables.cbegin(), drawables.cend(), [&](const auto& drawable) {
        return drawable && hasLostContent(gl, *drawable->buffers);
    });
}

bool ModelContent::isReady(const ContextGL& gl, GPUModel& model, const ModelDrawables& drawables) {
    if (isComplete(gl, drawables))
        return true;
    const quint64 group = gl.group()->serial();
    if (_failedGroups.contains(group))
        return false;
    if (fill(model) && isComplete(gl, drawables))
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
