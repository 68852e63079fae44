#include <velgl/drawfilter.h>

#include <atomic>
#include <cstring>

#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>

#include "drawing/drawbuffersaccess.h"
#include "drawing/drawfilteraccess.h"

namespace Atelier::Vel {

namespace {

std::atomic<quint64> lastSerial{0};

QVector<QBitArray> masksOf(const GPUModel& model, const DrawFilter::Condition& condition) {
    QVector<QBitArray> masks;
    for (int drawable = 0; drawable < model.drawableCount(); ++drawable) {
        const DrawBuffers* const buffers = model.drawable(drawable); // null if it was removed
        QBitArray mask(buffers ? DrawBuffersAccess::commandCount(*buffers) : 0);
        for (int command = 0; command < mask.size(); ++command)
            mask.setBit(command, condition(drawable, command));
        masks.append(mask);
    }
    return masks;
}

// A value that the material lacks is that of an opaque one.
bool isOpaque(const GPUModel& model, int drawable, int command, const QString& member) {
    const InstanceDataCollection* const materials = model.materials(drawable);
    if (!materials || command >= materials->items().size())
        return true;
    const QByteArray value = materials->items()[command].value(member);
    float opacity = 1;
    if (value.size() == int(sizeof opacity))
        std::memcpy(&opacity, value.constData(), sizeof opacity);
    return !(opacity < 1);
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

DrawFilter DrawFilter::ofKey(const GPUModel& model, quint64 key) {
    return {model, [&](int drawable, int) { return model.key(drawable) == key; }};
}

DrawFilter DrawFilter::ofOpacity(const GPUModel& model, Opacity opacity, const QString& member) {
    return {model, [&](int drawable, int command) {
                return isOpaque(model, drawable, command, member) == (opacity == Opacity::Opaque);
            }};
}

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
