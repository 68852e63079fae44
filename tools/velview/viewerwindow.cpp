#include "viewerwindow.h"

#include <utility>

#include <QtCore/QFileInfo>
#include <QtCore/QMimeData>
#include <QtGui/QDropEvent>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QVBoxLayout>

#include "folderfiles.h"
#include "keylist.h"
#include "loadbar.h"
#include "messagebar.h"
#include "modelsources.h"
#include "modeltools.h"
#include "modelview.h"
#include "partspanel.h"
#include "problemsfinder.h"
#include "problemspanel.h"
#include "processage.h"
#include "screenshot.h"
#include "shownmodel.h"
#include "statisticspanel.h"
#include "viewersettings.h"

namespace Atelier::Vel::Viewer {

namespace {

constexpr QSize kFirstSize(1100, 750);
constexpr int kMessageMilliseconds = 5000;

QStringList localFiles(const QMimeData& data) {
    QStringList files;
    for (const QUrl& url : data.urls())
        if (url.isLocalFile())
            files.append(url.toLocalFile());
    return files;
}

} // namespace

ViewerWindow::ViewerWindow(const ViewerOptions& options, QWidget* parent)
    : QMainWindow(parent),
      _options(options),
      _view(new ModelView(options.up)),
      _messages(new MessageBar),
      _loadBar(new LoadBar),
      _parts(new PartsPanel),
      _statistics(new StatisticsPanel),
      _problems(new ProblemsPanel),
      _finder(new ProblemsFinder(this)),
      _loads(new LoadController(this)),
      _watch(new FileWatch(this)),
      _actions(new ViewerActions(*this, *_view)) {
    auto* const middle = new QWidget;
    auto* const column = new QVBoxLayout(middle);
    column->setContentsMargins({});
    column->setSpacing(0);
    column->addWidget(_messages);
    column->addWidget(_view, 1);
    setCentralWidget(middle);
    statusBar()->addPermanentWidget(_loadBar);
    setAcceptDrops(true);
    connectFileActions();
    connectViewActions();
    makePanels();
    new ModelTools({*_actions, *_view, *_parts, *_problems, *statusBar()}, this);
    on(ActionId::Keys, [this] { showKeys(); });
    on(ActionId::About, [this] { showAbout(); });
    connectLoads();
    restoreWindow();
    updateTitle();
    _view->setFocus();
}

// The base class hides panels and the view, which must not reach this window any more.
ViewerWindow::~ViewerWindow() {
    for (QDockWidget* panel : findChildren<QDockWidget*>())
        panel->disconnect(this);
    _view->disconnect(this);
}

void ViewerWindow::on(ActionId id, const std::function<void()>& work) {
    connect((*_actions)[id], &QAction::triggered, this, [work] { work(); });
}

void ViewerWindow::onSwitch(ActionId id, const std::function<void(bool isOn)>& work) {
    connect((*_actions)[id], &QAction::toggled, this, work);
}

void ViewerWindow::connectFileActions() {
    on(ActionId::Open, [this] { chooseFile(); });
    on(ActionId::NewWindow, [this] { Q_EMIT windowWanted({}); });
    on(ActionId::Reload, [this] { reload(); });
    on(ActionId::Previous, [this] { openNeighbour(-1); });
    on(ActionId::Next, [this] { openNeighbour(1); });
    onSwitch(ActionId::Watch, [this](bool isOn) { setWatching(isOn); });
    on(ActionId::Screenshot, [this] { saveScreenshot(); });
    on(ActionId::Cancel, [this] { escape(); });
    on(ActionId::CloseWindow, [this] { close(); });
    on(ActionId::Quit, [] { QApplication::closeAllWindows(); });
    connect(_actions->recentFiles(), &QMenu::aboutToShow, this, &ViewerWindow::fillRecentFiles);
    connect(_watch, &FileWatch::changed, this, &ViewerWindow::reload);
    (*_actions)[ActionId::Watch]->setChecked(_options.isWatching);
}

void ViewerWindow::connectViewActions() {
    const QPair<ActionId, const char*> views[] = {{ActionId::Front, "front"},
                                                  {ActionId::Right, "right"},
                                                  {ActionId::Top, "top"},
                                                  {ActionId::Isometric, "iso"}};
    for (const auto& view : views)
        on(view.first, [this, name = QString::fromLatin1(view.second)] { _view->showFrom(name); });
    const QPair<ActionId, ViewFeature> features[] = {
        {ActionId::Edges, ViewFeature::Edges},
        {ActionId::Normals, ViewFeature::Normals},
        {ActionId::Grid, ViewFeature::Grid},
        {ActionId::Axes, ViewFeature::Axes},
        {ActionId::Textures, ViewFeature::Textures},
        {ActionId::AmbientOcclusion, ViewFeature::AmbientOcclusion},
        {ActionId::Box, ViewFeature::Box}};
    for (const auto& feature : features) {
        (*_actions)[feature.first]->setChecked(_view->options().has(feature.second));
        onSwitch(feature.first, [this, what = feature.second](bool isOn) { _view->setFeature(what, isOn); });
    }
    onSwitch(ActionId::Orthographic, [this](bool isOn) {
        _view->setProjection(isOn ? Projection::Orthographic : Projection::Perspective);
    });
    on(ActionId::ResetCamera, [this] { _view->resetCamera(); });
    on(ActionId::Background, [this] { nextBackground(); });
    onSwitch(ActionId::FullScreen, [this](bool isOn) { setFullScreen(isOn); });
}

void ViewerWindow::makePanels() {
    addPanel(_parts, tr("Parts"), ActionId::Parts, Qt::RightDockWidgetArea);
    addPanel(_statistics, tr("Statistics"), ActionId::Statistics, Qt::RightDockWidgetArea);
    addPanel(_problems, tr("Problems"), ActionId::Problems, Qt::BottomDockWidgetArea);
    connect(_view, &ModelView::frameDrawn, this, &ViewerWindow::updateStatistics);
    connect(_finder, &ProblemsFinder::found, _problems, &ProblemsPanel::showCheck);
    connect(qobject_cast<QDockWidget*>(_problems->parentWidget()), &QDockWidget::visibilityChanged, this,
            &ViewerWindow::findProblems);
}

// A panel is hidden until the user asks for it. The window remembers that.
void ViewerWindow::addPanel(QWidget* content, const QString& title, ActionId id, Qt::DockWidgetArea area) {
    auto* const panel = new QDockWidget(title, this);
    panel->setObjectName(QStringLiteral("panel%1").arg(static_cast<int>(id)));
    panel->setWidget(content);
    addDockWidget(area, panel);
    panel->hide();
    QAction* const action = (*_actions)[id];
    connect(action, &QAction::triggered, panel, &QDockWidget::setVisible);
    connect(panel->toggleViewAction(), &QAction::toggled, action, &QAction::setChecked);
}

void ViewerWindow::connectLoads() {
    connect(_loads, &LoadController::started, this, [this](const QString& path) {
        _messages->hide();
        _loadBar->begin(path);
    });
    connect(_loads, &LoadController::progressed, _loadBar, &LoadBar::showState);
    connect(_loads, &LoadController::finished, this, &ViewerWindow::show);
    connect(_loads, &LoadController::failed, this, [this](const QString& error) {
        _loadBar->hide();
        _messages->showError(error);
    });
    connect(_loads, &LoadController::cancelled, this, [this] {
        _loadBar->hide();
        statusBar()->showMessage(tr("Loading was cancelled"), kMessageMilliseconds);
    });
    connect(_loadBar, &LoadBar::cancelClicked, _loads, &LoadController::cancel);
    connect(_view, &ModelView::paintFailed, _messages, &MessageBar::showError);
    connect(_view, &ModelView::contextFailed, this, &ViewerWindow::openGLFailed);
}

void ViewerWindow::open(const QString& path) {
    load(QFileInfo(path).absoluteFilePath(), LoadPurpose::Open);
}

void ViewerWindow::reload() {
    if (!_path.isEmpty())
        load(_path, _view->model() && _view->model()->read().path == _path ? LoadPurpose::Reload
                                                                           : LoadPurpose::Open);
}

void ViewerWindow::load(const QString& path, LoadPurpose purpose) {
    _path = path;
    updateTitle();
    _loads->start({path, _options.load.options, _options.load.isOptimised}, purpose);
}

void ViewerWindow::show(const std::shared_ptr<ReadModel>& read, LoadPurpose purpose) {
    _loadBar->hide();
    auto model = std::make_shared<ShownModel>(read);
    const std::shared_ptr<ShownModel> before = _view->model();
    if (purpose == LoadPurpose::Reload && before && before->read().path == read->path)
        model->takeChangesOf(*before);
    if (purpose == LoadPurpose::Reload)
        _view->replaceModel(std::move(model));
    else
        _view->showModel(std::move(model));
    _parts->showModel(_view->model());
    _finder->cancel();
    _examinedModel = nullptr;
    _statisticsModel = nullptr;
    findProblems();
    ViewerSettings::addRecentFile(read->path);
    watchFiles();
}

// Watches the files of the model, if that is wanted.
void ViewerWindow::watchFiles() {
    const bool isWatching = _options.isWatching && _view->model();
    _watch->setFiles(isWatching ? sourcesOf(_view->model()->read().path, _view->model()->read().report)
                                : QStringList());
}

void ViewerWindow::openNeighbour(int steps) {
    const QString neighbour = _path.isEmpty() ? QString() : neighbourOf(_path, steps);
    if (neighbour.isNull())
        statusBar()->showMessage(tr("There is no other OBJ file in this folder"), kMessageMilliseconds);
    else
        load(neighbour, LoadPurpose::Open);
}

void ViewerWindow::chooseFile() {
    const QStringList files = QFileDialog::getOpenFileNames(
        this, tr("Open Models"), ViewerSettings::lastFolder(), tr("OBJ models (*.obj *.OBJ);;All files (*)"));
    for (const QString& file : files)
        if (file == files.first())
            open(file);
        else
            Q_EMIT windowWanted(file);
}

void ViewerWindow::fillRecentFiles() {
    QMenu* const menu = _actions->recentFiles();
    menu->clear();
    for (const QString& file : ViewerSettings::recentFiles())
        connect(menu->addAction(file), &QAction::triggered, this, [this, file] { open(file); });
    menu->addSeparator();
    connect(menu->addAction(tr("Clear")), &QAction::triggered, this, &ViewerSettings::clearRecentFiles);
}

void ViewerWindow::setWatching(bool isWatching) {
    _options.isWatching = isWatching;
    watchFiles();
}

// An examination takes longer than a load, so it waits until somebody wants to see it.
void ViewerWindow::findProblems() {
    if (!_view->model() || !_problems->isVisible() || _finder->isRunning() ||
        std::exchange(_examinedModel, _view->model().get()) == _view->model().get())
        return;
    _problems->showExamining();
    _finder->start(_view->model()->read().path,
                   {_options.load.options.files, _options.load.options.searchPaths});
}

void ViewerWindow::updateStatistics() {
    const ShownModel* const model = _view->model().get();
    if (std::exchange(_statisticsModel, model) != model && model != nullptr) {
        qInfo("First picture of %s, %.0f ms after the start of velview", qPrintable(model->read().path),
              processAge());
        _statistics->showLines(statisticsOf(*model));
    }
    _statistics->showFrameTime(_view->frameMilliseconds());
}

void ViewerWindow::showKeys() {
    QMessageBox box(QMessageBox::NoIcon, tr("Keys and Mouse"), keyList(*_actions), QMessageBox::Close, this);
    box.setTextFormat(Qt::RichText);
    box.exec();
}

void ViewerWindow::showAbout() {
    QMessageBox::about(this, tr("About velview"),
                       tr("<b>velview %1</b><p>Shows OBJ models as VelModel reads them.")
                           .arg(QStringLiteral(VELMODEL_VERSION)));
}

void ViewerWindow::saveScreenshot() {
    QString error;
    const QString file = saveNumbered(_view->grabFramebuffer(), ViewerSettings::screenshotFolder(),
                                      QFileInfo(_path).completeBaseName(), error);
    if (file.isNull())
        _messages->showError(error);
    else
        statusBar()->showMessage(tr("Saved %1").arg(file), kMessageMilliseconds);
}

void ViewerWindow::setFullScreen(bool isFull) {
    menuBar()->setVisible(!isFull);
    statusBar()->setVisible(!isFull);
    setWindowState(isFull ? windowState() | Qt::WindowFullScreen : windowState() & ~Qt::WindowFullScreen);
}

// The first of these that applies.
void ViewerWindow::escape() {
    if (_loads->isLoading())
        _loads->cancel();
    else if ((*_actions)[ActionId::Measure]->isChecked())
        (*_actions)[ActionId::Measure]->setChecked(false);
    else
        (*_actions)[ActionId::FullScreen]->setChecked(false);
}

void ViewerWindow::nextBackground() {
    const int next = (static_cast<int>(_view->options().background) + 1) % kBackgrounds;
    _view->setBackground(static_cast<Background>(next));
}

void ViewerWindow::restoreWindow() {
    if (!restoreGeometry(ViewerSettings::geometry()))
        resize(kFirstSize);
    restoreState(ViewerSettings::panels());
}

void ViewerWindow::updateTitle() {
    setWindowFilePath(_path);
    setWindowTitle(_path.isEmpty() ? tr("velview") : tr("%1 - velview").arg(QFileInfo(_path).fileName()));
}

void ViewerWindow::closeEvent(QCloseEvent* event) {
    (*_actions)[ActionId::FullScreen]->setChecked(false);
    ViewerSettings::setWindow(saveGeometry(), saveState());
    QMainWindow::closeEvent(event);
}

void ViewerWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!localFiles(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void ViewerWindow::dropEvent(QDropEvent* event) {
    QStringList files = localFiles(*event->mimeData());
    if (files.isEmpty())
        return;
    open(files.takeFirst());
    for (const QString& file : files)
        Q_EMIT windowWanted(file);
    event->acceptProposedAction();
}

} // namespace Atelier::Vel::Viewer
