#pragma once

#include <memory>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtGui/QMatrix4x4>

#include "camera.h"
#include "linegeometry.h"

namespace Atelier::Vel {
class BufferObject;
class Program;
class VertexArrayObject;
} // namespace Atelier::Vel

namespace Atelier::Vel::Viewer {

/// Points on the GPU. Requires: a current context, for setPoints() and draws.
class PointBuffer {
public:
    void setPoints(const PointList& list);

private:
    friend class PointPainter;

    QSharedPointer<BufferObject> _positions;
    QSharedPointer<BufferObject> _colours;
    QSharedPointer<VertexArrayObject> _array;
    int _count = 0;
};

/// Draws lines and triangles of one colour for each point, blended over what is there.
class PointPainter {
public:
    enum class Shape { Lines, Triangles };
    /// Whether surfaces hide what is behind them.
    enum class Depth { Tested, Ignored };

    /// Requires: a current context. Returns: null, and the cause in `error`, if it cannot draw.
    static std::unique_ptr<PointPainter> create(QString& error);
    ~PointPainter();
    PointPainter(const PointPainter&) = delete;
    PointPainter& operator=(const PointPainter&) = delete;

    /// `pixelSize` is the width of lines, in pixels of the screen.
    void draw(const PointBuffer& points, Shape shape, Depth depth, const Tool::Camera& camera,
              const QMatrix4x4& projection, float pixelSize);

private:
    PointPainter() = default;

    std::unique_ptr<Program> _program;
};

} // namespace Atelier::Vel::Viewer
