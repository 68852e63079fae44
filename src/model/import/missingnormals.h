#pragma once

#include <velmodel/loadoptions.h>

#include "drawdata/progressmeter.h"

namespace Atelier::Vel {

class SmoothingGroups;
struct Mesh;

/// Whether the options give normals to corners for which a file with normals has none.
bool completesNormals(const LoadOptions& options);

/// Gives each corner that lacks a normal one by the options, or has the preparation generate it. `mesh` is
/// that of a complete file, and a feed with alignNormals() made it if completesNormals(). Throws Cancelled if
/// `meter` does.
/// Returns: the number of corners without a normal if the file has normals; 0 if it has none.
/// Cost:    none if the options are the default. If no corner lacks a normal, one pass over the tuples of the
///          corners that were merged as they arrived. Otherwise they are listed again by attribute: 4 bytes
///          per corner and attribute. For the normals of corners see makeCornerNormals().
quint64 completeNormals(Mesh& mesh, const LoadOptions& options, const SmoothingGroups& groups,
                        ProgressMeter& meter);

} // namespace Atelier::Vel
