#pragma once

#include <memory>

#include <QtCore/QSharedPointer>

#include <velgl/sharedpointer.h>
#include <velmodel/modeldatastream.h>

namespace Atelier::Vel {

/// A stream of exactly `count` elements; null if the allocator returns none. Its type may differ from `type`.
inline QSharedPointer<ModelDataStream> requestStream(ModelDataStreamAllocator& allocator, unsigned int type,
                                                     quint64 count) {
    QSharedPointer<ModelDataStream> stream =
        shared(std::unique_ptr<ModelDataStream>(allocator.alloc(type, count)));
    // A stream without a scalar type always has size 0.
    if (stream.isNull() || stream->size() == count || ModelDataStream::typeSize(type) == 0)
        return stream;
    stream->resize(count);
    return stream->size() == count ? stream : QSharedPointer<ModelDataStream>();
}

} // namespace Atelier::Vel
