#pragma once

#include <QtCore/QVector>

#include "linegeometry.h"

namespace Atelier::Vel::Viewer {

/// What is marked on a model: a measured distance, and faces.
struct ViewMarks {
    QVector<QVector3D> measured;          ///< up to two points
    QVector<QVector<QVector3D>> outlines; ///< the corners of each face

    bool isEmpty() const { return measured.isEmpty() && outlines.isEmpty(); }
    /// Adds a measured point. A third one begins another distance.
    void measure(const QVector3D& point);
};

/// A text at a point of the model.
struct MarkLabel {
    QVector3D at;
    QString text;
};

/// The lines of the marks. `size` is that of the model.
PointList markLines(const ViewMarks& marks, float size);
/// The measured distance, in the units of the file; none without two points.
QVector<MarkLabel> distanceLabels(const ViewMarks& marks);
/// The lengths of three edges of a box.
QVector<MarkLabel> sizeLabels(const ModelBox& box);
/// The box around the outlines.
ModelBox outlineBox(const ViewMarks& marks);

} // namespace Atelier::Vel::Viewer
