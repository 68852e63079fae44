#pragma once

#include <QtCore/QString>

#include "import/obj/objrun.h"

namespace Atelier::Vel {

struct Mesh;

/// Adds the colours of positions to a mesh: one per position, as an attribute that shares the index list of
/// the positions. The attribute exists only if a position has a colour. It has four components if a colour
/// has alpha, otherwise three.
class VertexColours {
public:
    /// `mesh` must outlive this object.
    explicit VertexColours(Mesh& mesh);

    /// Adds the colours of a run and removes them from it. Requires: the attribute of the positions exists if
    /// the run has colours.
    void take(ObjRun& run);

private:
    void declare(int components);
    void addWhite(quint64 count);
    /// Gives the colours so far an alpha of 1.
    void widen();
    void add(const float* values, quint64 count);

    Mesh& _mesh;
    QString _name;
    quint64 _count = 0;
    int _components = 0; ///< 0 as long as all positions are without a colour
};

} // namespace Atelier::Vel
