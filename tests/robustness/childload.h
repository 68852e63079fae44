#pragma once

#include <functional>

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velmodel/objloader.h>

namespace Atelier::Vel::Testing {

/// What a load gave that ran in a process of its own.
struct ChildLoad {
    bool hasEnded = false; ///< neither crashed nor was stopped
    bool isLoaded = false;
    bool isBadAlloc = false;
    QString error;
    QStringList warnings;
    LoadReport report;
    int commands = 0;
    int indexCount = 0;
    quint64 peakBytes = 0; ///< by how much the load raised the peak of resident memory
    double seconds = 0;
};

/// Loads a model with a context that keeps nothing, in a child process that `prepare` may put limits on. A
/// child that takes an hour is stopped. The figures are printed, too.
ChildLoad loadInChild(const QString& path, const std::function<void()>& prepare = {});

} // namespace Atelier::Vel::Testing
