#pragma once

#include <QtCore/QtGlobal>

#include <velmodel/modeldatastream.h>

namespace Atelier::Vel {

/// The whole 32-bit words inside a stream's bytes, at most one per element, whatever type the stream says.
/// A client may have made the stream, so nothing but its own size counts. Null gives no words.
struct WordView {
    quint32* words = nullptr;
    quint64 count = 0;

    static WordView of(ModelDataStream* stream);
};

/// The bytes of a stream. Null gives none.
struct ByteView {
    unsigned char* bytes = nullptr;
    quint64 count = 0;

    static ByteView of(ModelDataStream* stream);
};

/// Null counts as empty, and so does a stream whose bytes cannot be had.
bool isEmpty(ModelDataStream* stream);

/// Appends `count` elements of `elementSize` bytes each. Returns: false when the stream did not take them.
/// One of wider elements is not asked to: it would read beyond `data`.
bool appendTo(ModelDataStream& stream, quint64 count, const void* data, quint64 elementSize);

} // namespace Atelier::Vel
