#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include <QtCore/QtGlobal>

#include "memory/scratchblock.h"

namespace Atelier::Vel {

/// Finds faces that have the same vertices as an earlier one, in the same order or in the opposite one.
class FaceMatches {
public:
    /// More faces than this are not compared. The table takes up to 80 MiB.
    static constexpr quint32 kMaxFaces = quint32(1) << 21;
    /// The maximum number of candidates that a face is compared with.
    static constexpr int kMaxCandidates = 64;

    enum class Match { None, Same, Opposite };

    struct Result {
        Match match = Match::None;
        quint32 tag = 0; ///< of the first such face
    };

    /// Adds a face, with a number that the caller knows it by. The faces of a file, in their order, are added
    /// in about the order of memory.
    /// Requires: three corners at least.
    /// Cost:     expected O(count), at most kMaxCandidates comparisons.
    Result add(const quint32* corners, quint32 count, quint32 tag);

    /// The number of faces that were not compared with all earlier ones.
    quint64 skipped() const { return _skipped; }

private:
    // The corners from the lowest on, in the direction of the lower neighbour. Those of larger faces are
    // represented by a hash of 96 bits.
    struct Key {
        quint32 words[4];
        quint32 count;

        friend bool operator==(const Key& a, const Key& b) {
            return a.words[0] == b.words[0] && a.words[1] == b.words[1] && a.words[2] == b.words[2] &&
                   a.words[3] == b.words[3] && a.count == b.count;
        }
    };
    struct Entry {
        Key key;
        quint32 next; ///< in the same bucket; 0 for none, else a number from 1
        quint32 tag;
        bool isReversed; ///< in comparison with the key
    };

    static Key triangleKey(const quint32* corners, bool& isReversed);
    static Key keyOf(const quint32* corners, quint32 count, bool& isReversed);
    std::size_t bucketOf(const Key& key) const;
    void growBuckets();

    // Each block holds this many entries. Entries stay in their block when the table grows.
    static constexpr quint32 kBlockEntries = quint32(1) << 16;

    Entry& entry(quint32 i) { return _entries[i / kBlockEntries]->as<Entry>()[i % kBlockEntries]; }

    std::vector<std::unique_ptr<ScratchBlock>> _entries;
    quint32 _entryCount = 0;
    std::unique_ptr<ScratchBlock> _buckets; ///< in each the number of an entry, from 1
    std::size_t _bucketCount = 0;
    quint64 _skipped = 0;
};

} // namespace Atelier::Vel
