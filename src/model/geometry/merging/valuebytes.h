#pragma once

#include <cstring>

#include "geometry/merging/hash.h"

namespace Atelier::Vel {

// Two values are equal if their bytes are equal: -0.0 and 0.0 differ, and two NaNs with the same bits are
// equal. The hash, the copied key and the comparison below read a value only through valueWord() and
// valueRest(). To make other bytes equal, change these two functions.

/// A word of a value.
template<typename Word>
Word valueWord(const unsigned char* bytes) {
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// The last `count` bytes of a value, fewer than eight, followed by zeros.
inline quint64 valueRest(const unsigned char* bytes, quint64 count) {
    quint64 word = 0;
    std::memcpy(&word, bytes, count);
    return word;
}

/// Values of the strides that nearly all attributes have: 4, 8, 12 and 16 bytes.
template<quint64 Stride>
struct ValueBytes {
    static constexpr quint64 stride() { return Stride; }

    /// Folds a value into a running hash.
    static quint64 hashed(quint64 hash, const unsigned char* bytes) {
        if constexpr (Stride == 4)
            return mixWords(hash, valueWord<quint32>(bytes), 0);
        else
            return mixWords(hash, valueWord<quint64>(bytes), tail(bytes));
    }

    /// Copies a value to a key, which has capacity for its stride.
    static void copy(const unsigned char* bytes, unsigned char* key) {
        for (quint64 i = 0; i + 8 <= Stride; i += 8)
            store(valueWord<quint64>(bytes + i), key + i);
        if constexpr (Stride % 8 == 4)
            store(valueWord<quint32>(bytes + Stride - 4), key + Stride - 4);
    }

    static bool equal(const unsigned char* a, const unsigned char* b) {
        if constexpr (Stride == 4)
            return valueWord<quint32>(a) == valueWord<quint32>(b);
        else
            return valueWord<quint64>(a) == valueWord<quint64>(b) && tail(a) == tail(b);
    }

private:
    /// The bytes after the first eight.
    static quint64 tail(const unsigned char* bytes) {
        if constexpr (Stride == 8)
            return 0;
        else if constexpr (Stride == 12)
            return valueWord<quint32>(bytes + 8);
        else
            return valueWord<quint64>(bytes + 8);
    }

    template<typename Word>
    static void store(Word word, unsigned char* key) {
        std::memcpy(key, &word, sizeof word);
    }
};

/// Values of any stride.
struct AnyValueBytes {
    quint64 bytesPerValue;

    quint64 stride() const { return bytesPerValue; }

    quint64 hashed(quint64 hash, const unsigned char* bytes) const {
        quint64 left = bytesPerValue;
        for (; left >= 16; bytes += 16, left -= 16)
            hash = mixWords(hash, valueWord<quint64>(bytes), valueWord<quint64>(bytes + 8));
        if (left < 8)
            return mixWords(hash, valueRest(bytes, left), 0);
        return mixWords(hash, valueWord<quint64>(bytes), valueRest(bytes + 8, left - 8));
    }

    void copy(const unsigned char* bytes, unsigned char* key) const {
        quint64 left = bytesPerValue;
        for (; left >= 8; bytes += 8, key += 8, left -= 8) {
            const auto word = valueWord<quint64>(bytes);
            std::memcpy(key, &word, sizeof word);
        }
        const quint64 rest = valueRest(bytes, left);
        std::memcpy(key, &rest, left);
    }

    bool equal(const unsigned char* a, const unsigned char* b) const {
        quint64 left = bytesPerValue;
        for (; left >= 8; a += 8, b += 8, left -= 8)
            if (valueWord<quint64>(a) != valueWord<quint64>(b))
                return false;
        return valueRest(a, left) == valueRest(b, left);
    }
};

/// Calls `work` with the value type of a stride.
/// Returns: the result of `work`.
template<typename Work>
auto withStride(quint64 stride, const Work& work) {
    switch (stride) {
    case 4:
        return work(ValueBytes<4>());
    case 8:
        return work(ValueBytes<8>());
    case 12:
        return work(ValueBytes<12>());
    case 16:
        return work(ValueBytes<16>());
    default:
        return work(AnyValueBytes{stride});
    }
}

} // namespace Atelier::Vel
