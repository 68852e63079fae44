#pragma once

#include <QtCore/QtGlobal>

#include <velmodel/modeldatastream.h>

namespace Atelier::Vel {

/// The complete 32-bit words in the bytes of a stream, at most one per element, whatever its type is. A
/// client may have made the stream, so only its actual size is used. A null stream has no words.
struct WordView {
    quint32* words = nullptr;
    quint64 count = 0;

    static WordView of(ModelDataStream* stream);
};

/// The bytes of a stream. A null stream has none.
struct ByteView {
    unsigned char* bytes = nullptr;
    quint64 count = 0;

    static ByteView of(ModelDataStream* stream);
};

/// Whether a stream is empty. A null stream counts as empty, and so does a stream whose bytes are not
/// available.
bool isEmpty(ModelDataStream* stream);

/// Appends `count` elements of `elementSize` bytes each. Does not append to a stream of wider elements,
/// because that would read beyond `data`. Returns: false if the elements were not appended.
bool appendTo(ModelDataStream& stream, quint64 count, const void* data, quint64 elementSize);

} // namespace Atelier::Vel
