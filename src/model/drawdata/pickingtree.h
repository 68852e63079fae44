#pragma once

#include <vector>

#include "drawdata/drawdatacontent.h"
#include "geometry/picking/trianglehierarchy.h"

namespace Atelier::Vel {

/// What all pickers of a DrawData share: the tree of its triangles, and which commands they belong to.
class PickingTree {
public:
    struct Command {
        int drawable;
        int command;
        quint32 firstTriangle; ///< the number of its first triangle in the hierarchy
        DrawData::Box box;
    };

    explicit PickingTree(const DrawDataContent& content);

    const TriangleHierarchy& hierarchy() const { return _hierarchy; }
    /// All commands, in the order of their triangles' numbers.
    const std::vector<Command>& commands() const { return _commands; }
    /// The position of a triangle's command in commands().
    std::size_t commandOf(quint32 triangle) const;
    quint64 byteCount() const;

private:
    std::vector<Command> _commands;
    TriangleHierarchy _hierarchy;
};

} // namespace Atelier::Vel
