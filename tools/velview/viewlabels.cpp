#include "viewlabels.h"

#include <algorithm>
#include <array>

#include <QtGui/QPainter>

#include "viewcamera.h"

namespace Atelier::Vel::Viewer {

namespace {

constexpr double kAxisLength = 32; // in pixels
constexpr double kAxisMargin = 52; // from the corner of the window
constexpr double kLetterDistance = 10;

const std::array<QColor, 3> kAxisColours = {QColor(214, 62, 62), QColor(58, 158, 72), QColor(66, 115, 214)};

} // namespace

QColor contrastingColour(const QColor& background) {
    return background.lightnessF() > 0.5 ? QColor(40, 44, 50) : QColor(215, 220, 226);
}

void paintAxes(QPainter& painter, const ViewCamera& camera, const QSize& size) {
    painter.save();
    const QMatrix4x4 view = camera.camera().view;
    const QPointF origin(kAxisMargin, size.height() - kAxisMargin);
    std::array<int, 3> axes = {0, 1, 2};
    // The nearest axis is painted last.
    std::sort(axes.begin(), axes.end(), [&](int a, int b) { return view(2, a) < view(2, b); });
    QFont font = painter.font();
    font.setBold(true);
    painter.setFont(font);
    for (const int axis : axes) {
        const QPointF direction(double(view(0, axis)), -double(view(1, axis)));
        painter.setPen(QPen(kAxisColours[static_cast<std::size_t>(axis)], 2.5, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(origin, origin + direction * kAxisLength);
        const QPointF letter = origin + direction * (kAxisLength + kLetterDistance);
        painter.drawText(QRectF(letter - QPointF(10, 10), QSizeF(20, 20)), Qt::AlignCenter,
                         QString(QLatin1Char("XYZ"[axis])));
    }
    painter.restore();
}

void paintHint(QPainter& painter, const QString& text, const QColor& colour, const QRect& place) {
    painter.setPen(colour);
    painter.drawText(place, Qt::AlignCenter | Qt::TextWordWrap, text);
}

void paintLabel(QPainter& painter, const QString& text, const QPointF& at) {
    constexpr double kPadding = 5;
    QRectF plate = painter.fontMetrics().boundingRect(text);
    plate.moveCenter(at);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(20, 22, 26, 200));
    painter.drawRoundedRect(plate.adjusted(-kPadding, -kPadding / 2, kPadding, kPadding / 2), 4, 4);
    painter.setPen(Qt::white);
    painter.drawText(plate, Qt::AlignCenter, text);
}

} // namespace Atelier::Vel::Viewer
