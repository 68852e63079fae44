#pragma once

#include <array>
#include <utility>
#include <vector>

#include <QtCore/QSharedData>
#include <QtCore/QSharedPointer>

#include <velmodel/modeldatastream.h>

#include "streams/streamview.h"

namespace Atelier::Vel {

/// The face numbers of a group in the order in which they were added: either a stream of numbers, or runs of
/// consecutive numbers. A mesh may have many groups, and most of them have one run: a single run needs no
/// allocation.
class GroupFaces {
public:
    /// Adds a run of `count` faces that starts at number `first`.
    void addRun(quint32 first, quint32 count);
    void setStream(const QSharedPointer<ModelDataStream>& stream);
    /// Null if the faces are stored as runs.
    QSharedPointer<ModelDataStream> stream() const {
        return _earlier ? _earlier->stream : QSharedPointer<ModelDataStream>();
    }

    bool isEmpty() const { return _count == 0 && Vel::isEmpty(stream().data()); }
    /// Whether there are no faces, or a single run that starts at `next` or later. Raises `next` to the first
    /// number after the last run.
    bool followsAsOneRun(quint64& next) const;

    /// Calls `take(const WordView& faces)` with all face numbers, block by block.
    /// Returns: false as soon as `take` returns false.
    template<typename Take>
    bool forEach(const Take& take) const;

private:
    /// In the list of runs, marks an entry that counts the faces after the preceding entry.
    static constexpr quint32 kFollow = 0x80000000;

    struct FaceRuns : QSharedData {
        /// All runs except the last: the first number of each run. If the run has more than one face, the
        /// next entry is the number of its further faces, with kFollow set.
        std::vector<quint32> runs;
        QSharedPointer<ModelDataStream> stream;
    };

    FaceRuns& earlier();

    quint32 _first = 0;                    ///< of the last run
    quint32 _count = 0;                    ///< of the last run
    QSharedDataPointer<FaceRuns> _earlier; ///< null if one run is enough
};

template<typename Take>
bool GroupFaces::forEach(const Take& take) const {
    std::array<quint32, 2048> faces;
    quint64 used = 0;
    const auto hasTaken = [&] { return take(WordView{faces.data(), std::exchange(used, 0)}); };
    const auto hasTakenRun = [&](quint32 first, quint32 count) {
        for (quint32 i = 0; i < count; ++i) {
            if (used == faces.size() && !hasTaken())
                return false;
            faces[used++] = first + i;
        }
        return true;
    };
    if (!take(WordView::of(stream().data())))
        return false;
    static const std::vector<quint32> kNone;
    const std::vector<quint32>& runs = _earlier ? _earlier->runs : kNone;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const quint32 first = runs[i];
        const bool isAlone = i + 1 == runs.size() || (runs[i + 1] & kFollow) == 0;
        if (!hasTakenRun(first, isAlone ? 1 : (runs[++i] & ~kFollow) + 1))
            return false;
    }
    return hasTakenRun(_first, _count) && hasTaken();
}

} // namespace Atelier::Vel
