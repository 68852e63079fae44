#include "check/sectionlines.h"

#include <cstring>

namespace Atelier::Vel {

namespace {

// Whether a run has only faces, or only one kind of vertex lines.
bool isUniform(const ObjRun& run) {
    const int kinds = (run.positions.size > 0 ? 1 : 0) + (run.normals.size > 0 ? 1 : 0) +
                      (run.texCoords.size > 0 ? 1 : 0) + (run.cornerCounts.size > 0 ? 1 : 0);
    return kinds == 1;
}

} // namespace

SectionLines::SectionLines(std::string_view lines, qint64 firstLine, const ObjLineCounts& counts,
                           const ObjRun& run)
    : _at(lines.data()), _line(firstLine - 1), _counts(counts), _isUniform(isUniform(run)) {}

void SectionLines::advance(char first, char second) {
    if (_isUniform) {
        ++_line;
        return;
    }
    for (bool isFound = false; !isFound; ++_line) {
        isFound = _at[0] == first && (first == 'f' || _at[1] == second);
        if (_at[0] == 'v')
            ++(_at[1] == 'n' ? _counts.normals : _at[1] == 't' ? _counts.texCoords : _counts.positions);
        _at = static_cast<const char*>(rawmemchr(_at, '\n')) + 1;
    }
}

} // namespace Atelier::Vel
