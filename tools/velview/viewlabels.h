#pragma once

#include <QtCore/QRect>
#include <QtGui/QColor>

class QPainter;

namespace Atelier::Vel::Viewer {

class ViewCamera;

/// A colour that can be read on `background`.
QColor contrastingColour(const QColor& background);

/// The directions of the axes, in the lower left corner of a window of `size`.
void paintAxes(QPainter& painter, const ViewCamera& camera, const QSize& size);
/// A text in the middle of `place`.
void paintHint(QPainter& painter, const QString& text, const QColor& colour, const QRect& place);
/// A text on a plate, whose middle is at `at`.
void paintLabel(QPainter& painter, const QString& text, const QPointF& at);

} // namespace Atelier::Vel::Viewer
