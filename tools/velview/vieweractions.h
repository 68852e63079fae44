#pragma once

#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QVector>

class QAction;
class QMainWindow;
class QMenu;
class QWidget;

namespace Atelier::Vel::Viewer {

/// Everything that a user can do by a menu or a key.
enum class ActionId {
    Open,
    NewWindow,
    Reload,
    Previous,
    Next,
    Watch,
    Screenshot,
    Cancel,
    CloseWindow,
    Quit,
    Front,
    Right,
    Top,
    Isometric,
    Orthographic,
    ResetCamera,
    FrameSelection,
    Edges,
    Normals,
    Grid,
    Axes,
    Textures,
    AmbientOcclusion,
    Box,
    Background,
    FullScreen,
    Hide,
    Isolate,
    ShowAll,
    Measure,
    Parts,
    Statistics,
    Problems,
    Keys,
    About,
};

/// The actions of a window, in its menus.
class ViewerActions : public QObject {
    Q_OBJECT
public:
    /// Fills the menu bar of `window`. Keys that panels need themselves, such as the arrows, are for `view`
    /// only, the others for the whole window.
    ViewerActions(QMainWindow& window, QWidget& view);

    QAction* operator[](ActionId id) const { return _actions.value(static_cast<int>(id)); }
    /// The menu of recent files, which is empty.
    QMenu* recentFiles() const { return _recentFiles; }
    /// All actions, in the order of the menus.
    const QVector<QAction*>& all() const { return _all; }

private:
    QHash<int, QAction*> _actions;
    QVector<QAction*> _all;
    QMenu* _recentFiles = nullptr;
};

} // namespace Atelier::Vel::Viewer
