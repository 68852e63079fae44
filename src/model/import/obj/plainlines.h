#pragma once

#include "import/obj/objrun.h"

namespace Atelier::Vel {

/// The number of lines of each kind so far. Negative corner numbers count back from these.
struct ObjLineCounts {
    quint32 positions = 0;
    quint32 texCoords = 0;
    quint32 normals = 0;

    bool operator==(const ObjLineCounts& other) const {
        return positions == other.positions && texCoords == other.texCoords && normals == other.normals;
    }
};

/// Parses plain lines like parsePlainLines(), but may stop before any line and leave it to the scalar parser.
using WideParser = const char*(const char* first, const char* last, ObjLineCounts& counts, ObjRun& run);

/// The parsers that use instructions of certain processors; null on other processors.
WideParser* findSse41Parser();
WideParser* findAvx512Parser();
/// The fastest of them; null if the processor supports none.
WideParser* findWideParser();

/// Parses plain OBJ lines into `run` and counts them, until it finds a line that is not plain or the run is
/// full. Plain lines are "v", "vn" and "vt" lines of short decimals after another line of their kind, and "f"
/// lines of up to ObjRun::kPlainCorners corners with short numbers. Their tokens are separated by blanks. If
/// the run takes colours, a plain "v" line has three to seven decimals and nothing else. The result is the
/// same as that of an ObjReader for these lines. `wideParser` may be null.
///
/// Requires: `first` to `last` are complete lines, each with its line feed, and the bytes around them are
/// readable as in a LineSource, see LineSource::kPadding.
/// Returns:  the beginning of the first line that was not parsed, or `last`.
const char* parsePlainLines(const char* first, const char* last, ObjLineCounts& counts, ObjRun& run,
                            WideParser* wideParser);

} // namespace Atelier::Vel
