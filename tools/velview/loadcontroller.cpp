#include "loadcontroller.h"

#include <utility>

namespace Atelier::Vel::Viewer {

namespace {

// Less than a frame: a small model is shown with the next one.
constexpr int kLookMilliseconds = 5;

} // namespace

LoadController::LoadController(QObject* parent) : QObject(parent) {
    _timer.setInterval(kLookMilliseconds);
    connect(&_timer, &QTimer::timeout, this, &LoadController::look);
}

LoadController::~LoadController() {
    cancel();
    if (_load)
        _load->waitFor(kMaxWaitMilliseconds);
}

void LoadController::start(const LoadRequest& request, LoadPurpose purpose) {
    _load = std::make_unique<ModelLoad>(request);
    _purpose = purpose;
    _path = request.path;
    _timer.start();
    Q_EMIT started(_path);
}

void LoadController::cancel() {
    if (_load)
        _load->cancel();
}

void LoadController::look() {
    if (!_load->isFinished()) {
        Q_EMIT progressed(_load->state());
        return;
    }
    const auto model = std::make_shared<ReadModel>(_load->take());
    _timer.stop();
    _load.reset();
    _path.clear();
    if (model->isCancelled)
        Q_EMIT cancelled();
    else if (!model->error.isNull())
        Q_EMIT failed(model->error);
    else
        Q_EMIT finished(model, _purpose);
}

} // namespace Atelier::Vel::Viewer
