#include "check/vertexlines.h"

#include <algorithm>

namespace Atelier::Vel {

void VertexLines::add(qint64 firstLine, quint32 count) {
    const quint32 first = _positions;
    _positions += count;
    if (!_runs.empty() && _runs.back().first + _runs.back().count == first) {
        Run& last = _runs.back();
        const qint64 distance = last.count == 1 ? firstLine - last.line : last.distance;
        const bool fits = count == 1 || distance == 1;
        if (fits && last.line + distance * last.count == firstLine) {
            last.distance = distance;
            last.count += count;
            return;
        }
    }
    if (_runs.size() < kMaxRuns)
        _runs.push_back({first, count, firstLine, 1});
}

void VertexLines::addAdded(const ObjRun& run, SectionLines lines) {
    const auto count = static_cast<quint32>(run.positions.size / 3);
    if (count == 0)
        return;
    if (run.records() == count) {
        lines.toPosition();
        return add(lines.line(), count);
    }
    for (quint32 i = 0; i < count; ++i) {
        lines.toPosition();
        add(lines.line());
    }
}

void VertexLines::reportUnused(const QString& file, const std::vector<quint8>& used, FindingLog& log) const {
    const auto unused = static_cast<quint64>(std::count(used.begin(), used.end(), quint8(0)));
    if (unused == 0)
        return;
    const auto first = static_cast<quint32>(std::find(used.begin(), used.end(), quint8(0)) - used.begin());
    const auto describe = [&](CheckFinding& finding) {
        finding.message = QStringLiteral("%1 of %2 vertices belong to no face").arg(unused).arg(used.size());
    };
    log.add(CheckCode::VertexUnused, {file, lineOf(first), 0}, describe, unused);
}

qint64 VertexLines::lineOf(quint32 position) const {
    const auto after = std::upper_bound(_runs.begin(), _runs.end(), position,
                                        [](quint32 sought, const Run& run) { return sought < run.first; });
    if (after == _runs.begin())
        return 0;
    const Run& run = *(after - 1);
    const quint32 offset = position - run.first;
    return offset < run.count ? run.line + run.distance * offset : 0;
}

} // namespace Atelier::Vel
