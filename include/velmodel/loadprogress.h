#pragma once

#include <functional>

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

/// The phases of making draw data, in their order. A load makes normals before it merges if they are those of
/// corners: see NormalOptions. A phase that has no work is not reported.
enum class LoadPhase {
    Reading,       ///< the OBJ text; in bytes
    Merging,       ///< corners to vertices; in corners, for the search and once for each attribute
    Triangulating, ///< faces to triangles; in corners of the faces
    MakingNormals, ///< generated normals; in triangles and vertices, or in corners
    Optimising,    ///< see DrawData::optimised(); in triangle indices
};

/// How far a load has come in its current phase.
struct LoadStep {
    LoadPhase phase = LoadPhase::Reading;
    qint64 done = 0; ///< of `total`; never decreases within a phase, and may end below `total`
    /// Units of the phase; not 0 when the progress function is called. -1 if the size of the text is not
    /// known, because a source of the client has no size for it.
    qint64 total = 0;
};

/// A callback that observes and can cancel a load. It is called at the beginning of each phase and about 200
/// times in it at most, or once per MiB of a text of unknown size, on the thread that does the work.
/// Requires: it does not use the object that does the work.
/// Returns:  true to continue, false to cancel. The work then keeps no partial result and returns the value
///           that its own description states.
/// Errors:   an exception from the callback also cancels the work, and reaches the caller of the work.
using LoadProgress = std::function<bool(const LoadStep& step)>;

} // namespace Atelier::Vel
