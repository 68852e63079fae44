#pragma once

#include <string_view>

#include "import/obj/objrun.h"
#include "import/obj/plainlines.h"

namespace Atelier::Vel {

/// Walks over the lines that a fast parser has added to a run, to find out where a record comes from. Each
/// line is one record, and begins with its keyword.
class SectionLines {
public:
    /// `lines` are those of all records in `run`, and `counts` those before them.
    SectionLines(std::string_view lines, qint64 firstLine, const ObjLineCounts& counts, const ObjRun& run);

    /// Advances to the next face, or the next "v" or "vn" line. Requires: there is one.
    void toFace() { advance('f', ' '); }
    void toPosition() { advance('v', ' '); }
    void toNormal() { advance('v', 'n'); }

    /// The number of the current line.
    qint64 line() const { return _line; }
    /// The numbers of vertex lines up to the current line.
    const ObjLineCounts& counts() const { return _counts; }

private:
    void advance(char first, char second);

    const char* _at;
    qint64 _line;
    ObjLineCounts _counts;
    bool _isUniform; ///< whether all lines are of one kind
};

} // namespace Atelier::Vel
