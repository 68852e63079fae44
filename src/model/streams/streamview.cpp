#include "streams/streamview.h"

#include <algorithm>

namespace Atelier::Vel {

WordView WordView::of(ModelDataStream* stream) {
    const ByteView view = ByteView::of(stream);
    if (view.count == 0)
        return {};
    return {reinterpret_cast<quint32*>(view.bytes), std::min(stream->size(), view.count / sizeof(quint32))};
}

ByteView ByteView::of(ModelDataStream* stream) {
    const quint64 count = isEmpty(stream) ? 0 : stream->byteCount();
    void* const data = count == 0 ? nullptr : stream->data(0);
    if (data == nullptr)
        return {};
    return {static_cast<unsigned char*>(data), count};
}

bool isEmpty(const ModelDataStream* stream) {
    return stream == nullptr || stream->isEmpty();
}

} // namespace Atelier::Vel
