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

/// Null counts as empty.
bool isEmpty(const ModelDataStream* stream);

} // namespace Atelier::Vel
