#include "modelpoints.h"

#include <cstring>

#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/vertexarrayobject.h>

namespace Atelier::Vel::Tool {

namespace {

constexpr unsigned int kFloat = 0x1406;
constexpr int kPointBytes = 3 * int(sizeof(float));

QByteArray positionBytes(const GPUModel& model) {
    if (model.drawableCount() > 0)
        for (const VertexArrayObject::Stream& stream : model.drawable(0)->VAO()->streams())
            if (stream.name == QLatin1String("va_Vertex") && stream.components == 3 && stream.type == kFloat)
                return stream.buffer->readBack();
    return {};
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
    const QByteArray bytes = positionBytes(model);
    QVector<QVector3D> points;
    for (int at = 0; at + kPointBytes <= bytes.size(); at += kPointBytes) {
        float coordinates[3] = {};
        std::memcpy(coordinates, bytes.constData() + at, sizeof(coordinates));
        const QVector3D point(coordinates[0], coordinates[1], coordinates[2]);
        if (isInside(point, bounds))
            points.append(point);
    }
    return points.isEmpty() ? cornersOf(bounds) : points;
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
