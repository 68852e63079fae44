#pragma once

#include <functional>

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

/// The phases of making draw data, in their order. Not every load has all of them.
enum class LoadPhase {
    Reading,       ///< the OBJ text; in bytes
    Merging,       ///< corners to vertices; in corners, for the search and once for each attribute
    Triangulating, ///< faces; in corners
    MakingNormals, ///< in triangles
    Optimising,    ///< see DrawData::optimised(); in triangle indices
};

/// How far a load is.
struct LoadStep {
    LoadPhase phase = LoadPhase::Reading;
    qint64 done = 0;  ///< of `total`; never decreases within a phase, and may end below `total`
    qint64 total = 0; ///< not 0 when the progress function is called
};

/// Called at the beginning of each phase and up to some hundred times in it, on the thread that does the
/// work. Returns: false to cancel. An exception from it cancels, too, and reaches the caller of the work.
using LoadProgress = std::function<bool(const LoadStep& step)>;

} // namespace Atelier::Vel
