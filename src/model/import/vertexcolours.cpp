#include "import/vertexcolours.h"

#include <algorithm>
#include <array>

#include "glconstants.h"
#include "import/attributenames.h"
#include "mesh/mesh.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

namespace {

constexpr quint64 kBlock = ObjRun::kRecords;
using Block = std::array<float, ObjColour::kSize * kBlock>;

/// Copies colours with `from` values each as colours with `to` values each. Missing values remain.
void copyColours(const float* colours, quint64 count, std::size_t from, std::size_t to, float* out) {
    for (quint64 i = 0; i < count; ++i)
        std::copy_n(colours + i * from, std::min(from, to), out + i * to);
}

Block white() {
    Block block;
    block.fill(1.0F);
    return block;
}

} // namespace

VertexColours::VertexColours(Mesh& mesh) : _mesh(mesh), _name(colourAttribute()) {}

void VertexColours::take(ObjRun& run) {
    const quint64 count = run.colours.size / ObjColour::kSize;
    if (_components == 0 && run.colourComponents != 0) {
        declare(run.colourComponents);
        addWhite(_count);
    } else if (_components < run.colourComponents) {
        widen();
    }
    if (_components != 0)
        add(run.colours.items, count);
    _count += count;
    run.colours.size = 0;
    run.colourComponents = 0;
}

void VertexColours::declare(int components) {
    _mesh.attributes.createAlongside(_name, components, kGlFloat, positionAttribute());
    _components = components;
}

void VertexColours::addWhite(quint64 count) {
    const Block block = white();
    for (quint64 added = 0; added < count; added += kBlock)
        add(block.data(), std::min(kBlock, count - added));
}

void VertexColours::widen() {
    const auto narrow = static_cast<std::size_t>(_components);
    const QSharedPointer<ModelDataStream> stream = _mesh.attributes[_name].streams[kValues];
    const auto* const values = reinterpret_cast<const float*>(ByteView::of(stream.data()).bytes);
    declare(static_cast<int>(ObjColour::kSize));
    Block block = white();
    for (quint64 first = 0; first < _count; first += kBlock) {
        const quint64 count = std::min(kBlock, _count - first);
        copyColours(values + first * narrow, count, narrow, ObjColour::kSize, block.data());
        add(block.data(), count);
    }
}

/// `values` has ObjColour::kSize values per colour.
void VertexColours::add(const float* values, quint64 count) {
    const auto components = static_cast<std::size_t>(_components);
    Block block;
    copyColours(values, count, ObjColour::kSize, components, block.data());
    _mesh.attributes.addValues(_name, count * components, block.data(), kGlFloat);
}

} // namespace Atelier::Vel
