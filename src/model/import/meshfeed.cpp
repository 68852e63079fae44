#include "import/meshfeed.h"

#include <algorithm>
#include <array>
#include <utility>

#include "glconstants.h"
#include "import/attributenames.h"
#include "import/facegroups.h"
#include "import/obj/objreader.h"
#include "mesh/mesh.h"

namespace Atelier::Vel {

MeshFeed::MeshFeed(Mesh& mesh, FaceGroups& groups)
    : _mesh(mesh),
      _groups(groups),
      _run(new ObjRun),
      _position{positionAttribute(), 3},
      _normal{normalAttribute(), 3},
      _texCoord{texCoordAttribute(), 2},
      _colours(mesh) {}

ObjRun& MeshFeed::run() {
    if (_run->isFull())
        flush();
    return *_run;
}

void MeshFeed::addRun(const ObjRun& run) {
    if (!_run->hasRoomFor(run))
        flush();
    _run->append(run);
}

void MeshFeed::addRecord(const ObjReader& reader) {
    switch (reader.kind()) {
    case ObjReader::Kind::Position:
        return addPosition(reader);
    case ObjReader::Kind::Normal:
        return addVertex(_normal, _run->normals, reader.values());
    case ObjReader::Kind::TexCoord:
        return addVertex(_texCoord, _run->texCoords, reader.values());
    case ObjReader::Kind::Face:
        return addFace(reader);
    default:
        return;
    }
}

void MeshFeed::addPosition(const ObjReader& reader) {
    addVertex(_position, _run->positions, reader.values());
    if (_run->takesColours)
        _run->addColour(reader.colour());
}

template<size_t N>
void MeshFeed::addVertex(Attribute& attribute, FixedList<float, N>& values, const float* operands) {
    const auto components = static_cast<size_t>(attribute.components);
    if (!attribute.declared)
        declare(attribute);
    if (values.freeCapacity() < components)
        flush();
    std::copy_n(operands, components, values.items + values.size);
    values.size += components;
}

// Faces before the declaration add no indices to the attribute, unless it is aligned.
void MeshFeed::declare(Attribute& attribute) {
    flush();
    _mesh.attributes.create(attribute.name, attribute.components, kGlFloat, 0, 0);
    if (&attribute == &_normal && _alignsNormals)
        _mesh.attributes.omitCorners(attribute.name, _corners);
    attribute.declared = true;
}

void MeshFeed::addFace(const ObjReader& reader) {
    if (_run->cornerCounts.freeCapacity() == 0)
        flush();
    const int count = reader.cornerCount();
    _run->cornerCounts.push(static_cast<quint32>(count));
    for (int i = 0; i < count; ++i) {
        if (_run->positionIndices.freeCapacity() == 0)
            flush();
        const ObjCorner corner = reader.corner(i);
        _run->positionIndices.push(corner.position);
        _run->normalIndices.push(corner.normal);
        _run->texCoordIndices.push(corner.texCoord);
    }
}

void MeshFeed::useMaterial(MaterialName name) {
    joinGroup();
    _groups.use(std::move(name));
}

void MeshFeed::useObject(const QString& name) {
    joinGroup();
    _groups.useObject(name);
}

void MeshFeed::useGroup(const QString& name) {
    joinGroup();
    _groups.useGroup(name);
}

void MeshFeed::joinGroup() {
    const size_t count = _run->cornerCounts.size - _joined;
    if (count == 0)
        return;
    if (!_groups.add(static_cast<quint32>(_faces), static_cast<quint32>(count)))
        _facesWithoutGroup += count;
    _faces += count;
    _joined += count;
}

void MeshFeed::flush() {
    joinGroup();
    _joined = 0;
    _mesh.faces.add(_run->cornerCounts.size, _run->cornerCounts.items);
    _run->cornerCounts.size = 0;
    flushValues(_position, _run->positions);
    _colours.take(*_run);
    flushValues(_normal, _run->normals);
    flushValues(_texCoord, _run->texCoords);
    flushCorners();
}

void MeshFeed::flushCorners() {
    ObjRun& run = *_run;
    if (run.positionIndices.size == 0)
        return;
    _corners += run.positionIndices.size;
    std::array<CornerList, 3> lists{};
    std::size_t listCount = 0;
    for (const auto& [attribute, indices] : {std::pair(&_position, &run.positionIndices),
                                             {&_normal, &run.normalIndices},
                                             {&_texCoord, &run.texCoordIndices}})
        if (attribute->declared)
            lists[listCount++] = {&attribute->name, indices->items};
    _mesh.attributes.addCorners(lists.data(), listCount, static_cast<quint32>(run.positionIndices.size));
    run.positionIndices.size = run.normalIndices.size = run.texCoordIndices.size = 0;
}

template<size_t N>
void MeshFeed::flushValues(const Attribute& attribute, FixedList<float, N>& values) {
    if (values.size != 0)
        _mesh.attributes.addValues(attribute.name, values.size, values.items, kGlFloat);
    values.size = 0;
}

void MeshFeed::finish() {
    flush();
    _groups.finish();
    if (!_normal.declared)
        _mesh.normalsAttribute = _normal.name;
}

} // namespace Atelier::Vel
