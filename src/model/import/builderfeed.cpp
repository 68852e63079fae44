#include "import/builderfeed.h"

#include <algorithm>
#include <array>
#include <utility>

#include <velmodel/modelbuilder.h>

#include "import/objreader.h"
#include "singleupload.h"

namespace Atelier::Vel {

namespace {

constexpr unsigned int kFloatType = 0x1406; // GL_FLOAT

} // namespace

BuilderFeed::BuilderFeed(ModelBuilder& builder)
    : _builder(builder),
      _run(new ObjRun),
      _position{QStringLiteral("va_Vertex"), 3},
      _normal{QStringLiteral("va_Normal"), 3},
      _texCoord{QStringLiteral("va_TexCoord"), 2},
      _group(QStringLiteral("<default>")) {}

ObjRun& BuilderFeed::run() {
    if (_run->isFull())
        flush();
    return *_run;
}

void BuilderFeed::addRecord(const ObjReader& reader) {
    switch (reader.kind()) {
    case ObjReader::Kind::Position:
        return addVertex(_position, _run->positions, reader.values());
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

template<size_t N>
void BuilderFeed::addVertex(Attribute& attribute, FixedList<float, N>& values, const float* operands) {
    const auto components = static_cast<size_t>(attribute.components);
    if (!attribute.declared)
        declare(attribute);
    if (values.room() < components)
        flush();
    std::copy_n(operands, components, values.items + values.size);
    values.size += components;
}

// Faces from before the declaration give the attribute no indices.
void BuilderFeed::declare(Attribute& attribute) {
    flush();
    _builder.createVertexAttribute(attribute.name, attribute.components, kFloatType, 0, 0);
    attribute.declared = true;
}

void BuilderFeed::addFace(const ObjReader& reader) {
    if (_run->cornerCounts.room() == 0)
        flush();
    const int count = reader.cornerCount();
    _run->cornerCounts.push(static_cast<quint32>(count));
    for (int i = 0; i < count; ++i) {
        if (_run->positionIndices.room() == 0)
            flush();
        const ObjCorner corner = reader.corner(i);
        _run->positionIndices.push(corner.position);
        _run->normalIndices.push(corner.normal);
        _run->texCoordIndices.push(corner.texCoord);
    }
}

void BuilderFeed::useMaterial(const QString& name) {
    joinGroup();
    _group = name;
}

void BuilderFeed::joinGroup() {
    const size_t count = _run->cornerCounts.size - _joined;
    if (count == 0)
        return;
    if (!SingleUpload::addFaces(_builder, _group, static_cast<quint32>(_faces), static_cast<quint32>(count)))
        _facesWithoutGroup += count;
    _faces += count;
    _joined += count;
}

void BuilderFeed::flush() {
    joinGroup();
    _joined = 0;
    _builder.addVertexCountsToFaces(_run->cornerCounts.size, _run->cornerCounts.items);
    _run->cornerCounts.size = 0;
    flushValues(_position, _run->positions);
    flushValues(_normal, _run->normals);
    flushValues(_texCoord, _run->texCoords);
    flushCorners();
}

void BuilderFeed::flushCorners() {
    ObjRun& run = *_run;
    if (run.positionIndices.size == 0)
        return;
    _corners += run.positionIndices.size;
    std::array<SingleUpload::CornerList, 3> lists{};
    std::size_t listCount = 0;
    for (const auto& [attribute, indices] : {std::pair(&_position, &run.positionIndices),
                                             {&_normal, &run.normalIndices},
                                             {&_texCoord, &run.texCoordIndices}})
        if (attribute->declared)
            lists[listCount++] = {&attribute->name, indices->items};
    _mergesCorners = _mergesCorners && _position.declared &&
                     SingleUpload::addCorners(_builder, lists.data(), listCount,
                                              static_cast<quint32>(run.positionIndices.size));
    if (_mergesCorners) {
        run.positionIndices.size = run.normalIndices.size = run.texCoordIndices.size = 0;
        return;
    }
    flushIndices(_position, run.positionIndices);
    flushIndices(_normal, run.normalIndices);
    flushIndices(_texCoord, run.texCoordIndices);
}

template<size_t N>
void BuilderFeed::flushValues(const Attribute& attribute, FixedList<float, N>& values) {
    if (values.size != 0)
        _builder.addValuesToVertexAttribute(attribute.name, values.size, values.items, kFloatType);
    values.size = 0;
}

// A list that ends early means the same as one that goes on without indices, and faces that give none for an
// attribute are many: such corners are handed on only when one with an index follows.
void BuilderFeed::flushIndices(Attribute& attribute, FixedList<quint32, ObjRun::kCorners>& indices) {
    const auto isNone = [](quint32 index) { return index == kNoIndex; };
    if (attribute.declared && std::all_of(indices.items, indices.items + indices.size, isNone)) {
        attribute.withheld += indices.size;
    } else if (attribute.declared) {
        handOnWithheld(attribute, attribute.withheld);
        _builder.addIndicesToVertexAttribute(attribute.name, indices.size, indices.items);
    }
    indices.size = 0;
}

void BuilderFeed::handOnWithheld(Attribute& attribute, quint64 count) {
    if (count == 0)
        return;
    const std::vector<quint32> none(std::min<quint64>(count, ObjRun::kCorners), kNoIndex);
    for (quint64 left = count; left > 0; left -= std::min<quint64>(left, none.size()))
        _builder.addIndicesToVertexAttribute(attribute.name, std::min<quint64>(left, none.size()),
                                             none.data());
    attribute.withheld -= count;
}

void BuilderFeed::finish() {
    flush();
    // An attribute without any index would make the builder invalid.
    for (Attribute* attribute : {&_position, &_normal, &_texCoord})
        handOnWithheld(*attribute, std::min<quint64>(attribute->withheld, 1));
    if (!_normal.declared)
        _builder.generateNormals(_normal.name);
    if (!_texCoord.declared) {
        // The attribute is not declared, so both calls find none and change nothing: meant. A model without
        // texture coordinates has no stream of them.
        constexpr float kOrigin[] = {0.0F, 0.0F};
        constexpr unsigned int kFirst = 0;
        _builder.addValuesToVertexAttribute(_texCoord.name, 2, kOrigin, kFloatType);
        _builder.addIndicesToVertexAttribute(_texCoord.name, 1, &kFirst);
    }
}

} // namespace Atelier::Vel
