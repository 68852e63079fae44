#pragma once

#include <functional>
#include <memory>

#include <QtWidgets/QMainWindow>

#include "filewatch.h"
#include "loadcontroller.h"
#include "vieweractions.h"
#include "vieweroptions.h"

namespace Atelier::Vel::Viewer {

class LoadBar;
class MessageBar;
class ModelView;
class PartsPanel;
class ProblemsFinder;
class ProblemsPanel;
class StatisticsPanel;

/// A window with a view, its panels and menus. It shows one model at a time.
class ViewerWindow : public QMainWindow {
    Q_OBJECT
public:
    /// The files of `options` are not opened.
    explicit ViewerWindow(const ViewerOptions& options, QWidget* parent = nullptr);
    ~ViewerWindow() override;

    /// Loads a file in place of the model. The model stays until the load succeeds.
    void open(const QString& path);
    /// Loads the file again.
    void reload();

    ModelView& view() const { return *_view; }
    ViewerActions& actions() const { return *_actions; }
    LoadController& loads() const { return *_loads; }
    MessageBar& messages() const { return *_messages; }
    PartsPanel& parts() const { return *_parts; }
    StatisticsPanel& statistics() const { return *_statistics; }
    ProblemsPanel& problems() const { return *_problems; }
    ProblemsFinder& finder() const { return *_finder; }
    /// The file that is shown, or that was opened last.
    QString path() const { return _path; }

Q_SIGNALS:
    /// The user wants another window, for `path` if that is not null.
    void windowWanted(const QString& path);
    /// The window cannot show anything.
    void openGLFailed(const QString& error);

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void connectFileActions();
    void connectViewActions();
    void connectLoads();
    void makePanels();
    void addPanel(QWidget* content, const QString& title, ActionId id, Qt::DockWidgetArea area);
    void on(ActionId id, const std::function<void()>& work);
    void onSwitch(ActionId id, const std::function<void(bool isOn)>& work);

    void load(const QString& path, LoadPurpose purpose);
    void show(const std::shared_ptr<ReadModel>& read, LoadPurpose purpose);
    void openNeighbour(int steps);
    void chooseFile();
    void fillRecentFiles();
    void setWatching(bool isWatching);
    void watchFiles();
    void findProblems();
    void updateStatistics();
    void showKeys();
    void showAbout();
    void saveScreenshot();
    void setFullScreen(bool isFull);
    void escape();
    void nextBackground();
    void restoreWindow();
    void updateTitle();

    ViewerOptions _options;
    QString _path;
    const void* _statisticsModel = nullptr; // the model of the statistics
    const void* _examinedModel = nullptr;   // the model of the problems
    ModelView* _view;
    MessageBar* _messages;
    LoadBar* _loadBar;
    PartsPanel* _parts;
    StatisticsPanel* _statistics;
    ProblemsPanel* _problems;
    ProblemsFinder* _finder;
    LoadController* _loads;
    FileWatch* _watch;
    ViewerActions* _actions;
};

} // namespace Atelier::Vel::Viewer
