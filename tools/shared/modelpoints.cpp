#include "modelpoints.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <QtCore/QBitArray>

#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/vertexarrayobject.h>

namespace Atelier::Vel::Tool {

namespace {

constexpr unsigned int kFloat = 0x1406;
constexpr unsigned int kUnsignedShort = 0x1403;
constexpr int kPointBytes = 3 * int(sizeof(float));

QByteArray positionBytes(const DrawBuffers& drawable) {
    for (const VertexArrayObject::Stream& stream : drawable.VAO()->streams())
        if (stream.name == QLatin1String("va_Vertex") && stream.components == 3 && stream.type == kFloat)
            return stream.buffer->readBack();
    return {};
}

QVector<QVector3D> positionsOf(const DrawBuffers& drawable) {
    const QByteArray bytes = positionBytes(drawable);
    QVector<QVector3D> positions;
    positions.reserve(bytes.size() / kPointBytes);
    for (int at = 0; at + kPointBytes <= bytes.size(); at += kPointBytes) {
        float coordinates[3] = {};
        std::memcpy(coordinates, bytes.constData() + at, sizeof(coordinates));
        positions.append({coordinates[0], coordinates[1], coordinates[2]});
    }
    return positions;
}

template<typename Index>
QVector<quint32> indicesIn(const QByteArray& bytes) {
    QVector<quint32> indices;
    indices.reserve(bytes.size() / int(sizeof(Index)));
    for (int at = 0; at + int(sizeof(Index)) <= bytes.size(); at += int(sizeof(Index))) {
        Index index = 0;
        std::memcpy(&index, bytes.constData() + at, sizeof(index));
        indices.append(index);
    }
    return indices;
}

QVector<quint32> indicesOf(const DrawBuffers& drawable) {
    const QByteArray bytes = drawable.indexBuffer()->readBack();
    return drawable.indexType() == kUnsignedShort ? indicesIn<quint16>(bytes) : indicesIn<quint32>(bytes);
}

bool isFinite(const QVector3D& point) {
    return std::isfinite(point.x()) && std::isfinite(point.y()) && std::isfinite(point.z());
}

void include(ShownPoints& shown, const QVector3D& point) {
    GPUModel::Bounds& box = shown.bounds;
    if (!box.isValid)
        box = {point, point, true};
    for (int axis = 0; axis < 3; ++axis) {
        box.minimum[axis] = std::min(box.minimum[axis], point[axis]);
        box.maximum[axis] = std::max(box.maximum[axis], point[axis]);
    }
    shown.points.append(point);
}

// Which vertices the commands of a drawable use that pass.
QBitArray shownVertices(const GPUModel& model, int drawable, const DrawFilter& filter, int vertexCount) {
    const DrawBuffers& buffers = *model.drawable(drawable);
    const QVector<quint32> indices = indicesOf(buffers);
    const QVector<DrawElementsIndirectCommand> commands = buffers.drawElementsIndirectCommands();
    QBitArray isShown(vertexCount);
    for (int number = 0; number < commands.size(); ++number) {
        const DrawElementsIndirectCommand& command = commands[number];
        const qint64 end = std::min(qint64(command.firstIndex) + command.count, qint64(indices.size()));
        if (!filter.passes(drawable, number))
            continue;
        for (qint64 at = command.firstIndex; at < end; ++at)
            if (const qint64 vertex = qint64(indices[int(at)]) + command.baseVertex; vertex < vertexCount)
                isShown.setBit(int(vertex));
    }
    return isShown;
}

// Also false for coordinates that are not numbers.
bool isInside(const QVector3D& point, const GPUModel::Bounds& bounds) {
    for (int axis = 0; axis < 3; ++axis)
        if (!(point[axis] >= bounds.minimum[axis] && point[axis] <= bounds.maximum[axis]))
            return false;
    return true;
}

} // namespace

QVector<QVector3D> pointsInBounds(GPUModel& model) {
    const GPUModel::Bounds bounds = model.bounds();
    QVector<QVector3D> points;
    if (model.drawableCount() > 0)
        for (const QVector3D& point : positionsOf(*model.drawable(0)))
            if (isInside(point, bounds))
                points.append(point);
    return points.isEmpty() ? cornersOf(bounds) : points;
}

ShownPoints shownPoints(GPUModel& model, const DrawFilter& filter) {
    if (filter.passesAll())
        return {model.bounds(), pointsInBounds(model)};
    ShownPoints shown;
    for (int drawable = 0; drawable < model.drawableCount(); ++drawable) {
        const QVector<QVector3D> positions = positionsOf(*model.drawable(drawable));
        const QBitArray isShown = shownVertices(model, drawable, filter, positions.size());
        for (int vertex = 0; vertex < positions.size(); ++vertex)
            if (isShown.testBit(vertex) && isFinite(positions[vertex]))
                include(shown, positions[vertex]);
    }
    return shown;
}

QVector<QVector3D> cornersOf(const GPUModel::Bounds& bounds) {
    QVector<QVector3D> corners;
    for (int corner = 0; corner < 8; ++corner)
        corners.append({(corner & 1) != 0 ? bounds.maximum.x() : bounds.minimum.x(),
                        (corner & 2) != 0 ? bounds.maximum.y() : bounds.minimum.y(),
                        (corner & 4) != 0 ? bounds.maximum.z() : bounds.minimum.z()});
    return corners;
}

} // namespace Atelier::Vel::Tool
