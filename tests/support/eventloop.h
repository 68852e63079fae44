#pragma once

#include <functional>

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>

namespace Atelier::Vel::Testing {

/// Handles events until `condition` holds. Returns: false if it does not hold within ten seconds.
inline bool waitUntil(const std::function<bool()>& condition) {
    QElapsedTimer waited;
    waited.start();
    while (!condition() && waited.elapsed() < 10'000)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 10);
    return condition();
}

} // namespace Atelier::Vel::Testing
