#pragma once

#include <memory>

#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <velmodel/modelcheck.h>

#include "backgroundwork.h"

namespace Atelier::Vel::Viewer {

/// Examines files in the background, one at a time. A new examination replaces the one that runs.
class ProblemsFinder : public QObject {
    Q_OBJECT
public:
    explicit ProblemsFinder(QObject* parent = nullptr);

    void start(const QString& path, const CheckOptions& options);
    /// Ends an examination without a signal.
    void cancel();
    bool isRunning() const { return _work != nullptr; }

Q_SIGNALS:
    void found(const ModelCheck& check);

private:
    void look();

    std::unique_ptr<BackgroundWork<ModelCheck>> _work;
    QTimer _timer;
};

} // namespace Atelier::Vel::Viewer
