#pragma once

#include <memory>

#include <QtCore/QSharedPointer>

#include <velgl/sharedpointer.h>
#include <velmodel/modeldatastream.h>

namespace Atelier::Vel {

/// A stream of exactly `count` elements; null when the allocator gives none. Its type may be another.
inline QSharedPointer<ModelDataStream> requestStream(ModelDataStreamAllocator& allocator, unsigned int type,
                                                     quint64 count) {
    QSharedPointer<ModelDataStream> stream =
        shared(std::unique_ptr<ModelDataStream>(allocator.alloc(type, count)));
    // One of no scalar type has no elements, however many it is asked for.
    if (stream.isNull() || stream->size() == count || ModelDataStream::typeSize(type) == 0)
        return stream;
    stream->resize(count);
    return stream->size() == count ? stream : QSharedPointer<ModelDataStream>();
}

} // namespace Atelier::Vel
