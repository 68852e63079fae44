#pragma once

#include <vector>

#include <QtCore/QString>

#include "check/findinglog.h"
#include "check/sectionlines.h"

namespace Atelier::Vel {

/// The lines of the positions of a file, as runs at equal distances.
class VertexLines {
public:
    /// The maximum number of runs that are kept.
    static constexpr std::size_t kMaxRuns = 500'000;

    /// Adds the lines of the next `count` positions, which follow each other.
    void add(qint64 firstLine, quint32 count = 1);
    /// Adds the lines of the positions in a run.
    void addAdded(const ObjRun& run, SectionLines lines);
    /// Reports the positions that are not used: one entry of `used` each.
    void reportUnused(const QString& file, const std::vector<quint8>& used, FindingLog& log) const;
    /// The line of a position; 0 if it is not known.
    qint64 lineOf(quint32 position) const;

private:
    struct Run {
        quint32 first;
        quint32 count;
        qint64 line;
        qint64 distance;
    };

    std::vector<Run> _runs;
    quint32 _positions = 0;
};

} // namespace Atelier::Vel
