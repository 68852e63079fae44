#pragma once

#include <memory>

#include <QtCore/QObject>
#include <QtCore/QTimer>

#include "modelload.h"

namespace Atelier::Vel::Viewer {

/// What a load is for.
enum class LoadPurpose {
    Open,   ///< another model: the camera looks at all of it
    Reload, ///< the same file again: the camera stays where it is
};

/// Runs one load at a time. A new load replaces the one that runs.
class LoadController : public QObject {
    Q_OBJECT
public:
    /// The longest time that the destructor waits.
    static constexpr int kMaxWaitMilliseconds = 200;

    explicit LoadController(QObject* parent = nullptr);
    /// Cancels, and waits for the thread of the load, up to kMaxWaitMilliseconds.
    ~LoadController() override;

    void start(const LoadRequest& request, LoadPurpose purpose);
    /// The load ends soon, with cancelled().
    void cancel();
    bool isLoading() const { return _load != nullptr; }
    /// The file of the load that runs; null if there is none.
    QString path() const { return _path; }

Q_SIGNALS:
    void started(const QString& path);
    void progressed(const LoadState& state);
    /// One of these ends each load that is not replaced.
    void finished(const std::shared_ptr<ReadModel>& model, LoadPurpose purpose);
    void failed(const QString& error);
    void cancelled();

private:
    void look();

    std::unique_ptr<ModelLoad> _load;
    LoadPurpose _purpose = LoadPurpose::Open;
    QString _path;
    QTimer _timer;
};

} // namespace Atelier::Vel::Viewer
