#include "drawdata/pickingtree.h"

#include <algorithm>

namespace Atelier::Vel {

namespace {

PickingMesh meshOf(const DrawDataContent& content) {
    PickingMesh mesh;
    if (!content.hasFloatPositions())
        return mesh;
    const auto& positions = content.attributes[static_cast<std::size_t>(content.position)];
    mesh.positions = {positions.data, positions.bytes, positions.stride()};
    mesh.indices = content.indexWords.words;
    mesh.indexCount = content.indexWords.count;
    for (const DrawDataContent::Drawable& drawable : content.drawables)
        for (const DrawElementsIndirectCommand& command : drawable.commands)
            mesh.ranges.push_back({command.firstIndex, command.count / 3});
    return mesh;
}

std::vector<PickingTree::Command> commandsOf(const DrawDataContent& content) {
    std::vector<PickingTree::Command> commands;
    quint32 triangles = 0;
    for (std::size_t drawable = 0; drawable < content.drawables.size(); ++drawable) {
        const auto& drawn = content.drawables[drawable].commands;
        for (int command = 0; command < drawn.size(); ++command) {
            commands.push_back(
                {static_cast<int>(drawable), command, triangles, content.commandBox(drawn[command])});
            triangles += drawn[command].count / 3;
        }
    }
    return commands;
}

} // namespace

PickingTree::PickingTree(const DrawDataContent& content)
    : _commands(commandsOf(content)), _hierarchy(meshOf(content)) {}

std::size_t PickingTree::commandOf(quint32 triangle) const {
    const auto next = std::upper_bound(
        _commands.begin(), _commands.end(), triangle,
        [](quint32 number, const Command& command) { return number < command.firstTriangle; });
    return static_cast<std::size_t>(next - _commands.begin()) - 1;
}

quint64 PickingTree::byteCount() const {
    return sizeof *this + _commands.capacity() * sizeof(Command) + _hierarchy.byteCount();
}

} // namespace Atelier::Vel
