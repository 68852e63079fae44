#pragma once

#include <functional>

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velmodel/objloader.h>

namespace Atelier::Vel::Testing {

/// The result of a load that ran in its own process.
struct ChildLoad {
    bool hasEnded = false; ///< without a crash and without being stopped
    bool isLoaded = false;
    bool isBadAlloc = false;
    QString error;
    QStringList warnings;
    LoadReport report;
    int commands = 0;
    int indexCount = 0;
    quint64 peakBytes = 0; ///< increase of the peak of resident memory by the load
    double seconds = 0;
};

/// Loads a model in a child process, with a context that keeps nothing; `prepare` may limit the child's
/// resources. A child that takes an hour is stopped. Also prints the figures.
ChildLoad loadInChild(const QString& path, const std::function<void()>& prepare = {});

} // namespace Atelier::Vel::Testing
