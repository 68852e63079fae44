#pragma once

#include <QtCore/QString>

namespace Atelier::Vel::Viewer {

class ViewerActions;

/// All keys and gestures of the mouse, as rich text.
QString keyList(const ViewerActions& actions);

} // namespace Atelier::Vel::Viewer
