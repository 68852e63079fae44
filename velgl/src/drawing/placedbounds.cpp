#include "drawing/placedbounds.h"

#include <algorithm>
#include <cstring>

#include <velgl/instancedatacollection.h>
#include <velgl/instancedataplan.h>

#include "drawing/boxes.h"
#include "drawing/drawbuffersaccess.h"
#include "drawing/drawcommands.h"
#include "instances/collectionaccess.h"

namespace Atelier::Vel {

namespace {

using Bounds = GPUModel::Bounds;

/// A matrix as instance data have it, column by column.
struct Matrix {
    float columns[4][4];
};

bool isBox(const Bounds& box) {
    return box.isValid && isFinite(box.minimum) && isFinite(box.maximum) &&
           box.minimum.x() <= box.maximum.x() && box.minimum.y() <= box.maximum.y() &&
           box.minimum.z() <= box.maximum.z();
}

// Each coordinate of the result is a sum of products, whose smallest and largest values are taken one by one.
Bounds transformed(const Bounds& box, const Matrix& matrix) {
    Bounds result;
    for (int row = 0; row < 3; ++row) {
        double smallest = double(matrix.columns[3][row]);
        double largest = smallest;
        for (int axis = 0; axis < 3; ++axis) {
            const double a = double(matrix.columns[axis][row]) * double(box.minimum[axis]);
            const double b = double(matrix.columns[axis][row]) * double(box.maximum[axis]);
            smallest += std::min(a, b);
            largest += std::max(a, b);
        }
        result.minimum[row] = static_cast<float>(smallest);
        result.maximum[row] = static_cast<float>(largest);
    }
    result.isValid = isFinite(result.minimum) && isFinite(result.maximum);
    return result;
}

bool hasMatrix(const InstanceDataPlan* plan, const QString& name) {
    return plan && std::any_of(plan->members().cbegin(), plan->members().cend(),
                               [&](const InstanceDataPlan::Member& member) {
                                   return member.name == name &&
                                          member.type == InstanceDataPlan::DataType::Mat4;
                               });
}

// The box around `box` in the places of `count` instances from `first` on. Those that are missing have zeros
// for a matrix, which draws nothing.
Bounds aroundInstances(const Bounds& box, const QList<InstanceData>& instances, qint64 first, qint64 count,
                       const QString& matrixMember) {
    Bounds bounds;
    const qint64 end = std::min<qint64>(first + count, instances.size());
    for (qint64 number = first; number < end; ++number) {
        const QByteArray value = instances[static_cast<int>(number)].value(matrixMember);
        Matrix matrix{};
        if (value.size() != int(sizeof matrix))
            continue;
        std::memcpy(&matrix, value.constData(), sizeof matrix);
        include(bounds, transformed(box, matrix));
    }
    return bounds;
}

} // namespace

void GivenBoxes::set(const QVector<Bounds>& boxes) {
    _boxes = boxes;
    for (Bounds& box : _boxes)
        if (!isBox(box))
            box = {};
    ++_revision;
}

Bounds GivenBoxes::placed(const DrawBuffers& buffers, const InstanceDataCollection* instances,
                          const QString& matrixMember) {
    const DrawCommands& commands = DrawBuffersAccess::commands(buffers);
    const Key key{matrixMember,
                  instances ? instances->plan() : nullptr,
                  DrawBuffersAccess::commandRevision(buffers),
                  commands.visibilityRevision(),
                  instances ? CollectionAccess::revision(*instances) : 0,
                  _revision};
    if (key == _key)
        return _placed;
    const bool isTransformed = hasMatrix(key.plan, matrixMember);
    const qint64 instanceCount = qint64(DrawBuffersAccess::lastInstance(buffers)) + 1;
    Bounds bounds;
    for (int number = 0; number < std::min(commands.count(), _boxes.size()); ++number) {
        const DrawElementsIndirectCommand& command = commands.asSet()[number];
        const Bounds& box = _boxes.at(number);
        if (!box.isValid || commands.isHidden(number) || command.count == 0 || command.instanceCount == 0)
            continue;
        include(bounds, isTransformed ? aroundInstances(box, instances->items(), number * instanceCount,
                                                        instanceCount, matrixMember)
                                      : box);
    }
    _key = key;
    _placed = bounds;
    return bounds;
}

} // namespace Atelier::Vel
