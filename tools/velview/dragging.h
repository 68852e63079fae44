#pragma once

#include <QtCore/QPointF>
#include <QtCore/Qt>

namespace Atelier::Vel::Viewer {

/// What a drag does to the camera.
enum class DragAction { None, Orbit, Pan, Zoom };

/// Left drag orbits; middle drag, and left drag with Shift, pans; right drag zooms.
DragAction dragAction(Qt::MouseButton button, Qt::KeyboardModifiers modifiers);

/// The enlargement of a drag downwards or upwards by that many pixels: up enlarges.
double dragZoom(double pixelsDown);
/// The enlargement of a wheel by that many eighths of a degree, or of two fingers by that many pixels.
double wheelZoom(double eighths);
double scrollZoom(double pixels);

/// A press of a mouse button, up to its release.
class Dragging {
public:
    void press(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, const QPointF& at);
    /// Requires: action() is not None. Returns: where the pointer was before.
    QPointF moveTo(const QPointF& to);
    void release() { _action = DragAction::None; }

    DragAction action() const { return _action; }
    Qt::MouseButton button() const { return _button; }
    QPointF start() const { return _start; }
    /// Whether the pointer stayed in place, so that a release is a click.
    bool isClick() const { return _isClick; }

private:
    DragAction _action = DragAction::None;
    Qt::MouseButton _button = Qt::NoButton;
    QPointF _start;
    QPointF _last;
    bool _isClick = false;
};

} // namespace Atelier::Vel::Viewer
