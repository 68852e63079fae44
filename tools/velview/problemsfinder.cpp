#include "problemsfinder.h"

#include <new>

namespace Atelier::Vel::Viewer {

namespace {

constexpr int kLookMilliseconds = 50;

ModelCheck checked(const QString& path, const CheckOptions& options,
                   const BackgroundWork<ModelCheck>::IsWanted& isWanted) {
    try {
        return checkOBJFile(path, options, [&](const LoadStep& /*step*/) { return isWanted(); });
    } catch (const std::bad_alloc&) {
        ModelCheck none;
        none.notExamined.append(ProblemsFinder::tr("There is not enough memory to examine the file."));
        return none;
    }
}

} // namespace

ProblemsFinder::ProblemsFinder(QObject* parent) : QObject(parent) {
    _timer.setInterval(kLookMilliseconds);
    connect(&_timer, &QTimer::timeout, this, &ProblemsFinder::look);
}

void ProblemsFinder::start(const QString& path, const CheckOptions& options) {
    _work = std::make_unique<BackgroundWork<ModelCheck>>(
        [path, options](const BackgroundWork<ModelCheck>::IsWanted& isWanted) {
            return checked(path, options, isWanted);
        });
    _timer.start();
}

void ProblemsFinder::cancel() {
    _timer.stop();
    _work.reset();
}

void ProblemsFinder::look() {
    if (!_work->isFinished())
        return;
    const ModelCheck check = _work->take();
    cancel();
    Q_EMIT found(check);
}

} // namespace Atelier::Vel::Viewer
