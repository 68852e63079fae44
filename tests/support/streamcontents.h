#pragma once

#include <vector>

#include <QtCore/QByteArray>
#include <QtCore/QSharedPointer>

#include <velmodel/modeldatastream.h>

namespace Atelier::Vel::Testing {

/// All elements of a stream; empty for null.
template<typename T>
std::vector<T> elements(const QSharedPointer<ModelDataStream>& stream) {
    if (stream.isNull() || stream->isEmpty())
        return {};
    const auto* const first = static_cast<const T*>(stream->data(0));
    return std::vector<T>(first, first + stream->size());
}

/// All bytes of a stream; empty for null.
inline QByteArray bytes(const QSharedPointer<ModelDataStream>& stream) {
    if (stream.isNull() || stream->isEmpty())
        return {};
    return QByteArray(static_cast<const char*>(stream->data(0)), static_cast<int>(stream->byteCount()));
}

} // namespace Atelier::Vel::Testing
