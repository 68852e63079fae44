#pragma once

#include "import/obj/objrun.h"

namespace Atelier::Vel {

/// Lines of each kind so far; what negative corner numbers count back from.
struct ObjLineCounts {
    quint32 positions = 0;
    quint32 texCoords = 0;
    quint32 normals = 0;
};

/// Parses plain lines as parsePlainLines() does, but may leave a line to the one-by-one way at any time.
using WideParser = const char*(const char* first, const char* last, ObjLineCounts& counts, ObjRun& run);

/// The parsers that use instructions of some processors; null on the others.
WideParser* findSse41Parser();
WideParser* findAvx512Parser();
/// The fastest of them; null where the processor runs none.
WideParser* findWideParser();

/// Parses plain OBJ lines into `run` and counts them, until it meets a line that is not plain or the run
/// lacks room. Plain are "v", "vn" and "vt" lines of short decimals behind another line of their kind, and
/// "f" lines of up to ObjRun::kPlainCorners corners with short numbers, all with blanks between their tokens.
/// What it takes is what an ObjReader reads from the same lines. `wideParser` may be null.
///
/// Requires: `first` to `last` are whole lines, each with its line feed, and the bytes around them are as a
/// LineSource has them, see LineSource::kPadding.
/// Returns:  the beginning of the first line that was not taken, or `last`.
const char* parsePlainLines(const char* first, const char* last, ObjLineCounts& counts, ObjRun& run,
                            WideParser* wideParser);

} // namespace Atelier::Vel
