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
    const quint64 count = stream == nullptr || stream->isEmpty() ? 0 : stream->byteCount();
    void* const data = count == 0 ? nullptr : stream->data(0);
    if (data == nullptr)
        return {};
    return {static_cast<unsigned char*>(data), count};
}

bool isEmpty(ModelDataStream* stream) {
    return ByteView::of(stream).count == 0;
}

bool appendTo(ModelDataStream& stream, quint64 count, const void* data, quint64 elementSize) {
    if (ModelDataStream::typeSize(stream.type()) > elementSize)
        return false;
    const quint64 before = stream.size();
    stream.append(count, data);
    return stream.size() == before + count && stream.data(before) != nullptr;
}

} // namespace Atelier::Vel
