#include "dragging.h"

#include <cmath>

namespace Atelier::Vel::Viewer {

namespace {

// A hand is not steady: a click may move this far, in pixels.
constexpr double kClickDistance = 4;
constexpr double kDragDoubling = 150;  // pixels of a drag that enlarge to twice the size
constexpr double kWheelDoubling = 480; // eighths of a degree: four steps of a common wheel
constexpr double kScrollDoubling = 200;

} // namespace

DragAction dragAction(Qt::MouseButton button, Qt::KeyboardModifiers modifiers) {
    switch (button) {
    case Qt::LeftButton:
        return modifiers.testFlag(Qt::ShiftModifier) ? DragAction::Pan : DragAction::Orbit;
    case Qt::MiddleButton:
        return DragAction::Pan;
    case Qt::RightButton:
        return DragAction::Zoom;
    default:
        return DragAction::None;
    }
}

double dragZoom(double pixelsDown) {
    return std::exp2(-pixelsDown / kDragDoubling);
}

double wheelZoom(double eighths) {
    return std::exp2(eighths / kWheelDoubling);
}

double scrollZoom(double pixels) {
    return std::exp2(pixels / kScrollDoubling);
}

void Dragging::press(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, const QPointF& at) {
    _action = dragAction(button, modifiers);
    _button = button;
    _start = at;
    _last = at;
    _isClick = true;
}

QPointF Dragging::moveTo(const QPointF& to) {
    const QPointF distance = to - _start;
    if (std::hypot(distance.x(), distance.y()) > kClickDistance)
        _isClick = false;
    const QPointF before = _last;
    _last = to;
    return before;
}

} // namespace Atelier::Vel::Viewer
