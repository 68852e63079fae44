#include "mesh/unplacedfaces.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "geometry/allbelow.h"
#include "mesh/mesh.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

namespace {

/// The corner counts of all faces, as a list.
std::vector<quint32> cornerCounts(FaceStore& faces) {
    const UniformFaces uniform = faces.uniform();
    if (uniform.corners != 0)
        return std::vector<quint32>(uniform.count, uniform.corners);
    const WordView listed = WordView::of(faces.listed().data());
    return {listed.words, listed.words + listed.count};
}

/// The faces of a mesh, and which of them remain.
class Selection {
public:
    Selection(std::vector<quint32> counts, const WordView& positions, quint32 positionCount);

    std::vector<quint32> removed() const;
    void apply(FaceStore& faces) const;
    void apply(VertexAttribute& attribute) const;
    void apply(GroupFaces& faces) const;

private:
    static constexpr quint32 kRemoved = kNoIndex;

    std::vector<quint32> _counts;
    std::vector<quint32> _numbers; ///< of each face among those that remain, or kRemoved
    quint32 _removed = 0;
};

Selection::Selection(std::vector<quint32> counts, const WordView& positions, quint32 positionCount)
    : _counts(std::move(counts)), _numbers(_counts.size()) {
    quint64 corner = 0;
    for (std::size_t face = 0; face < _counts.size(); corner += _counts[face++]) {
        const quint64 end = corner + _counts[face];
        const bool isPlaced =
            end <= positions.count && allBelow(positions.words + corner, _counts[face], positionCount);
        _numbers[face] = isPlaced ? static_cast<quint32>(face) - _removed : kRemoved;
        _removed += isPlaced ? 0 : 1;
    }
}

std::vector<quint32> Selection::removed() const {
    std::vector<quint32> faces;
    for (std::size_t face = 0; face < _numbers.size(); ++face)
        if (_numbers[face] == kRemoved)
            faces.push_back(static_cast<quint32>(face));
    return faces;
}

void Selection::apply(FaceStore& faces) const {
    std::vector<quint32> left;
    for (std::size_t face = 0; face < _counts.size(); ++face)
        if (_numbers[face] != kRemoved)
            left.push_back(_counts[face]);
    faces.clear();
    faces.add(left.size(), left.data());
}

void Selection::apply(VertexAttribute& attribute) const {
    ModelDataStream* const stream = attribute.streams[kIndices].data();
    const WordView indices = WordView::of(stream);
    if (indices.count == 0)
        return;
    quint64 corner = 0;
    quint64 left = 0;
    for (std::size_t face = 0; face < _counts.size() && corner < indices.count; corner += _counts[face++]) {
        const quint64 count = std::min<quint64>(_counts[face], indices.count - corner);
        if (_numbers[face] == kRemoved)
            continue;
        std::copy_n(indices.words + corner, count, indices.words + left);
        left += count;
    }
    // An attribute without any index would make the mesh incomplete.
    if (left == 0)
        indices.words[left++] = kNoIndex;
    stream->resize(left);
}

void Selection::apply(GroupFaces& faces) const {
    GroupFaces left;
    faces.forEach([&](const WordView& numbers) {
        std::for_each(numbers.words, numbers.words + numbers.count, [&](quint32 face) {
            if (_numbers[face] != kRemoved)
                left.addRun(_numbers[face], 1);
        });
        return true;
    });
    faces = left;
}

} // namespace

std::vector<quint32> removeUnplacedFaces(Mesh& mesh, const QString& positions) {
    // Corners are merged only as long as all of them have a position.
    if (mesh.attributes.mergedCorners() != nullptr || mesh.faces.isEmpty())
        return {};
    const VertexAttribute attribute = mesh.attributes.records().value(positions);
    const auto positionCount =
        static_cast<quint32>(std::min<quint64>(attribute.valueCount(kValues), kNoIndex));
    if (mesh.attributes.areIndicesBelow(positions, mesh.faces.cornerCount(), positionCount))
        return {};
    const WordView indices = WordView::of(attribute.streams[kIndices].data());
    const Selection selection(cornerCounts(mesh.faces), indices, positionCount);
    selection.apply(mesh.faces);
    for (VertexAttribute& record : mesh.attributes.records())
        if (record.listOwner.isNull())
            selection.apply(record);
    for (MaterialGroup& group : mesh.groups.records())
        selection.apply(group.faces);
    return selection.removed();
}

} // namespace Atelier::Vel
