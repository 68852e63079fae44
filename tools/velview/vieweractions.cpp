#include "vieweractions.h"

#include <QtCore/QCoreApplication>
#include <QtWidgets/QAction>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMenuBar>

namespace Atelier::Vel::Viewer {

namespace {

enum class Kind {
    Command,
    Switch, ///< on or off
    OfView, ///< a command whose key is for the view only
};

struct Entry {
    const char* menu; ///< null for the menu of the entry before
    const char* text; ///< null for a separator
    const char* keys;
    Kind kind = Kind::Command;
    ActionId id = ActionId::Open;
};

constexpr Entry kSeparator{nullptr, nullptr, nullptr};

constexpr Entry kEntries[] = {
    {QT_TRANSLATE_NOOP("ViewerActions", "&File"), QT_TRANSLATE_NOOP("ViewerActions", "&Open..."), "Ctrl+O",
     Kind::Command, ActionId::Open},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "&New Window"), "Ctrl+N", Kind::Command,
     ActionId::NewWindow},
    kSeparator,
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "&Reload"), "Up", Kind::OfView, ActionId::Reload},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "&Previous File"), "Left", Kind::OfView, ActionId::Previous},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "Ne&xt File"), "Right", Kind::OfView, ActionId::Next},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "Reload on &Change"), "W", Kind::Switch, ActionId::Watch},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "Cancel &Loading"), "Esc", Kind::Command, ActionId::Cancel},
    kSeparator,
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "Save &Screenshot"), "F12", Kind::Command,
     ActionId::Screenshot},
    kSeparator,
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "&Close Window"), "Ctrl+W", Kind::Command,
     ActionId::CloseWindow},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "&Quit"), "Ctrl+Q", Kind::Command, ActionId::Quit},
    {QT_TRANSLATE_NOOP("ViewerActions", "&View"), QT_TRANSLATE_NOOP("ViewerActions", "&Front"), "1",
     Kind::Command, ActionId::Front},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "&Right"), "3", Kind::Command, ActionId::Right},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "&Top"), "7", Kind::Command, ActionId::Top},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "&Isometric"), "9", Kind::Command, ActionId::Isometric},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "&Orthographic"), "5", Kind::Switch, ActionId::Orthographic},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "Rese&t Camera"), "Return", Kind::OfView,
     ActionId::ResetCamera},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "Frame &Selection"), "Z", Kind::Command,
     ActionId::FrameSelection},
    kSeparator,
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "&Edges"), "E", Kind::Switch, ActionId::Edges},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "&Normals"), "N", Kind::Switch, ActionId::Normals},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "&Grid"), "G", Kind::Switch, ActionId::Grid},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "A&xes"), "X", Kind::Switch, ActionId::Axes},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "Te&xtures"), "T", Kind::Switch, ActionId::Textures},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "Ambient &Occlusion"), "Q", Kind::Switch,
     ActionId::AmbientOcclusion},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "Bo&x with Sizes"), "C", Kind::Switch, ActionId::Box},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "Next &Background"), "B", Kind::Command,
     ActionId::Background},
    kSeparator,
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "F&ull Screen"), "F", Kind::Switch, ActionId::FullScreen},
    {QT_TRANSLATE_NOOP("ViewerActions", "&Model"), QT_TRANSLATE_NOOP("ViewerActions", "&Hide Selection"),
     "Del", Kind::Command, ActionId::Hide},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "&Isolate Selection"), "I", Kind::Command,
     ActionId::Isolate},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "Show &All"), "A", Kind::Command, ActionId::ShowAll},
    kSeparator,
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "Measure &Distance"), "D", Kind::Switch, ActionId::Measure},
    {QT_TRANSLATE_NOOP("ViewerActions", "&Panels"), QT_TRANSLATE_NOOP("ViewerActions", "&Parts"), "M",
     Kind::Switch, ActionId::Parts},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "&Statistics"), "S", Kind::Switch, ActionId::Statistics},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "P&roblems"), "P", Kind::Switch, ActionId::Problems},
    {QT_TRANSLATE_NOOP("ViewerActions", "&Help"), QT_TRANSLATE_NOOP("ViewerActions", "&Keys and Mouse"), "H",
     Kind::Command, ActionId::Keys},
    {nullptr, QT_TRANSLATE_NOOP("ViewerActions", "&About velview"), "", Kind::Command, ActionId::About},
};

QString translated(const char* text) {
    return QCoreApplication::translate("ViewerActions", text);
}

} // namespace

ViewerActions::ViewerActions(QMainWindow& window, QWidget& view) : QObject(&window) {
    QMenu* menu = nullptr;
    for (const Entry& entry : kEntries) {
        if (entry.menu != nullptr)
            menu = window.menuBar()->addMenu(translated(entry.menu));
        if (entry.text == nullptr) {
            menu->addSeparator();
            continue;
        }
        QAction* const action = menu->addAction(translated(entry.text));
        action->setShortcut(QKeySequence(QString::fromLatin1(entry.keys)));
        action->setCheckable(entry.kind == Kind::Switch);
        // Also where the menu bar is hidden.
        if (entry.kind == Kind::OfView) {
            action->setShortcutContext(Qt::WidgetShortcut);
            view.addAction(action);
        } else {
            window.addAction(action);
        }
        _actions.insert(static_cast<int>(entry.id), action);
        _all.append(action);
        if (entry.id == ActionId::Open)
            _recentFiles = menu->addMenu(translated(QT_TRANSLATE_NOOP("ViewerActions", "Open &Recent")));
    }
    (*this)[ActionId::ResetCamera]->setShortcuts({QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)});
}

} // namespace Atelier::Vel::Viewer
