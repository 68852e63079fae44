#include <velmodel/picking.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include <QtCore/QByteArray>
#include <QtCore/QHash>

#include "drawdata/pickingtree.h"
#include "geometry/picking/inversematrix.h"

namespace Atelier::Vel {

namespace {

/// A ray in double precision.
struct Line {
    SpaceVector origin;
    SpaceVector direction;
    double length; // of the direction
};

/// The commands that one matrix places.
struct Place {
    SpaceMatrix toRay;
    SpaceMatrix toMesh;
    DrawData::Box box; // of the commands, in the coordinates of the mesh
};

SpaceVector widened(const QVector3D& vector) {
    return {double(vector.x()), double(vector.y()), double(vector.z())};
}

QVector3D narrowed(const SpaceVector& vector) {
    return {float(vector[0]), float(vector[1]), float(vector[2])};
}

Line lineOf(const PickRay& ray) {
    const SpaceVector direction = widened(ray.direction);
    const double square =
        direction[0] * direction[0] + direction[1] * direction[1] + direction[2] * direction[2];
    return {widened(ray.origin), direction, std::sqrt(square)};
}

SpaceMatrix affine(const QMatrix4x4& matrix) {
    SpaceMatrix rows{};
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column)
            rows[std::size_t(row)][std::size_t(column)] = double(matrix(row, column));
    rows[3] = {0, 0, 0, 1};
    return rows;
}

/// `w` is 1 for a point and 0 for a direction.
SpaceVector moved(const SpaceMatrix& matrix, const SpaceVector& vector, double w) {
    const auto result = mapped(matrix, {vector[0], vector[1], vector[2], w});
    return {result[0], result[1], result[2]};
}

bool meets(const PickingRay& ray, const DrawData::Box& box) {
    const float minimum[3] = {box.minimum.x(), box.minimum.y(), box.minimum.z()};
    const float maximum[3] = {box.maximum.x(), box.maximum.y(), box.maximum.z()};
    return !ray.within(minimum, maximum).isEmpty();
}

void include(DrawData::Box& all, const DrawData::Box& box) {
    if (!all.isValid)
        all = box;
    for (int axis = 0; axis < 3; ++axis) {
        all.minimum[axis] = std::min(all.minimum[axis], box.minimum[axis]);
        all.maximum[axis] = std::max(all.maximum[axis], box.maximum[axis]);
    }
}

} // namespace

struct ModelPicker::Data {
    explicit Data(const DrawData& drawData)
        : data(drawData),
          tree(&DrawDataAccess::content(data).picking.treeOf(DrawDataAccess::content(data))) {}

    DrawData data;
    const PickingTree* tree;          // belongs to the content of the draw data
    std::vector<Place> places;        // empty until commands are placed
    std::vector<std::size_t> placeOf; // of each command; kNowhere if its matrix has no inverse
    static constexpr auto kNowhere = std::size_t(-1);

    void place(const Placement& placement);
    TriangleHit nearest(const Line& line, const Filter& filter) const;
    TriangleHit nearestPlaced(const Line& line, const Filter& filter) const;
    PickHit describe(const TriangleHit& hit) const;
    bool accepts(quint32 triangle, const Filter& filter) const;
};

// Commands with equal matrices share a place. Those without triangles need none.
void ModelPicker::Data::place(const Placement& placement) {
    places.clear();
    placeOf.assign(tree->commands().size(), kNowhere);
    QHash<QByteArray, std::size_t> numbers;
    for (std::size_t i = 0; i < placeOf.size(); ++i) {
        const PickingTree::Command& placed = tree->commands()[i];
        const QMatrix4x4 matrix = placement(placed.drawable, placed.command);
        const SpaceMatrix toRay = affine(matrix);
        const std::optional<SpaceMatrix> toMesh = inverseOf(toRay);
        if (!placed.box.isValid || !toMesh)
            continue;
        const QByteArray bytes(reinterpret_cast<const char*>(matrix.constData()), 16 * int(sizeof(float)));
        const auto known = numbers.constFind(bytes);
        placeOf[i] = known == numbers.constEnd() ? places.size() : *known;
        if (known == numbers.constEnd()) {
            numbers.insert(bytes, places.size());
            places.push_back({toRay, *toMesh, {}});
        }
        include(places[placeOf[i]].box, placed.box);
    }
}

bool ModelPicker::Data::accepts(quint32 triangle, const Filter& filter) const {
    const PickingTree::Command& command = tree->commands()[tree->commandOf(triangle)];
    return !filter || filter(command.drawable, command.command);
}

TriangleHit ModelPicker::Data::nearest(const Line& line, const Filter& filter) const {
    TriangleHit hit;
    const auto ray = PickingRay::make(line.origin, line.direction, line.length);
    const auto passes = [&](quint32 triangle) { return accepts(triangle, filter); };
    if (ray)
        tree->hierarchy().findNearer(*ray, filter ? TriangleFilter(std::ref(passes)) : TriangleFilter(), hit);
    return hit;
}

TriangleHit ModelPicker::Data::nearestPlaced(const Line& line, const Filter& filter) const {
    TriangleHit hit;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const Place& place = places[i];
        const auto ray = PickingRay::make(moved(place.toMesh, line.origin, 1),
                                          moved(place.toMesh, line.direction, 0), line.length);
        if (!ray || !meets(*ray, place.box))
            continue;
        const auto passes = [&](quint32 triangle) {
            return placeOf[tree->commandOf(triangle)] == i && accepts(triangle, filter);
        };
        tree->hierarchy().findNearer(*ray, std::ref(passes), hit);
    }
    return hit;
}

PickHit ModelPicker::Data::describe(const TriangleHit& hit) const {
    const std::size_t number = tree->commandOf(hit.number);
    const PickingTree::Command& command = tree->commands()[number];
    const quint32 triangle = hit.number - command.firstTriangle;
    const SpaceVector point =
        placeOf.empty() ? hit.point : moved(places[placeOf[number]].toRay, hit.point, 1);
    return {command.drawable, command.command, triangle,
            narrowed(point),  hit.distance,    narrowed(hit.weights)};
}

ModelPicker::ModelPicker() = default;
ModelPicker::ModelPicker(const DrawData& data) {
    if (!data.isNull())
        _data = std::make_shared<const Data>(data);
}
ModelPicker::ModelPicker(const ModelPicker& other) = default;
ModelPicker::ModelPicker(ModelPicker&& other) noexcept = default;
ModelPicker& ModelPicker::operator=(const ModelPicker& other) = default;
ModelPicker& ModelPicker::operator=(ModelPicker&& other) noexcept = default;
ModelPicker::~ModelPicker() = default;

ModelPicker ModelPicker::placed(const Placement& placement) const {
    ModelPicker result;
    if (_data) {
        const auto data = std::make_shared<Data>(*_data);
        data->place(placement);
        result._data = data;
    }
    return result;
}

std::optional<PickHit> ModelPicker::pick(const PickRay& ray, const Filter& filter) const {
    if (!_data)
        return {};
    const Line line = lineOf(ray);
    const TriangleHit hit =
        _data->placeOf.empty() ? _data->nearest(line, filter) : _data->nearestPlaced(line, filter);
    return hit.isHit() ? std::optional(_data->describe(hit)) : std::nullopt;
}

quint64 ModelPicker::byteCount() const {
    return _data ? _data->tree->byteCount() : 0;
}

std::optional<PickHit> pick(const DrawData& data, const PickRay& ray) {
    return ModelPicker(data).pick(ray);
}

} // namespace Atelier::Vel
