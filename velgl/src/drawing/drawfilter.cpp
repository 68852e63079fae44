#include <velgl/drawfilter.h>

#include <atomic>

#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>

#include "drawing/drawfilteraccess.h"

namespace Atelier::Vel {

namespace {

std::atomic<quint64> lastSerial{0};

QVector<QBitArray> masksOf(const GPUModel& model, const DrawFilter::Condition& condition) {
    QVector<QBitArray> masks;
    for (int drawable = 0; drawable < model.drawableCount(); ++drawable) {
        QBitArray mask(model.drawable(drawable)->drawElementsIndirectCommands().size());
        for (int command = 0; command < mask.size(); ++command)
            mask.setBit(command, condition(drawable, command));
        masks.append(mask);
    }
    return masks;
}

} // namespace

struct DrawFilter::Data {
    quint64 serial = 0;
    QVector<QBitArray> masks;
};

DrawFilter::DrawFilter() = default;

DrawFilter::DrawFilter(const QVector<QBitArray>& masks)
    : _data(std::make_shared<Data>(Data{++lastSerial, masks})) {}

DrawFilter::DrawFilter(const GPUModel& model, const Condition& condition)
    : DrawFilter(masksOf(model, condition)) {}

bool DrawFilter::passes(int drawable, int command) const {
    if (!_data || drawable < 0 || drawable >= _data->masks.size())
        return true;
    const QBitArray& mask = _data->masks[drawable];
    return command < 0 || command >= mask.size() || mask.testBit(command);
}

quint64 DrawFilterAccess::serial(const DrawFilter& filter) {
    return filter._data ? filter._data->serial : 0;
}

std::weak_ptr<const void> DrawFilterAccess::lifetime(const DrawFilter& filter) {
    return filter._data;
}

} // namespace Atelier::Vel
