#include "viewmarks.h"

#include <QtCore/QLocale>

namespace Atelier::Vel::Viewer {

namespace {

const QColor kMeasureColour(235, 70, 160);
const QColor kOutlineColour(230, 40, 40);
constexpr float kCrossSize = 0.012F; // of the size of the model
constexpr int kDigits = 6;           // a float has at least six

QString length(float value) {
    return QLocale().toString(double(value), 'g', kDigits);
}

void addCross(PointList& lines, const QVector3D& point, float size) {
    for (int axis = 0; axis < 3; ++axis) {
        QVector3D half;
        half[axis] = size;
        lines.addLine(point - half, point + half, kMeasureColour);
    }
}

} // namespace

void ViewMarks::measure(const QVector3D& point) {
    if (measured.size() == 2)
        measured.clear();
    measured.append(point);
}

PointList markLines(const ViewMarks& marks, float size) {
    PointList lines;
    for (const QVector3D& point : marks.measured)
        addCross(lines, point, kCrossSize * size);
    if (marks.measured.size() == 2)
        lines.addLine(marks.measured[0], marks.measured[1], kMeasureColour);
    for (const QVector<QVector3D>& outline : marks.outlines)
        for (int corner = 0; corner < outline.size(); ++corner)
            lines.addLine(outline[corner], outline[(corner + 1) % outline.size()], kOutlineColour);
    return lines;
}

QVector<MarkLabel> distanceLabels(const ViewMarks& marks) {
    if (marks.measured.size() != 2)
        return {};
    const QVector3D& from = marks.measured[0];
    const QVector3D& to = marks.measured[1];
    return {{from * 0.5F + to * 0.5F, length((to - from).length())}};
}

QVector<MarkLabel> sizeLabels(const ModelBox& box) {
    const QVector3D size = sizeOf(box);
    QVector<MarkLabel> labels;
    // Of the four edges along each axis, the one at the lower front or right, which is in view at first.
    const QVector3D corners[] = {{0, box.minimum.y(), box.maximum.z()},
                                 {box.maximum.x(), 0, box.maximum.z()},
                                 {box.maximum.x(), box.minimum.y(), 0}};
    for (int axis = 0; axis < 3; ++axis) {
        QVector3D at = corners[axis];
        at[axis] = centreOf(box)[axis];
        labels.append({at, length(size[axis])});
    }
    return labels;
}

ModelBox outlineBox(const ViewMarks& marks) {
    ModelBox box;
    for (const QVector<QVector3D>& outline : marks.outlines)
        for (const QVector3D& corner : outline)
            box = united(box, {corner, corner, true});
    return box;
}

} // namespace Atelier::Vel::Viewer
