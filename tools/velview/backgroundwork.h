#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace Atelier::Vel::Viewer {

/// Counts the threads of this process that work in the background. A process must not destroy its static
/// objects while there are any.
class RunningWork {
public:
    static int count();
    static void begin();
    static void end();
};

/// Work on a thread of its own. The public functions are for one thread, that of the window.
template<typename Result>
class BackgroundWork {
public:
    /// Returns: false once the result is no longer wanted.
    using IsWanted = std::function<bool()>;

    /// Calls `work` on a new thread. It must not use what may end before it.
    explicit BackgroundWork(std::function<Result(const IsWanted&)> work)
        : _shared(std::make_shared<Shared>()) {
        RunningWork::begin();
        std::thread([shared = _shared, work = std::move(work)]() mutable {
            shared->finish(work([&shared] { return shared->isWanted(); }));
            work = {};
            shared.reset(); // frees the result if the owner is gone
            RunningWork::end();
        }).detach();
    }
    /// Cancels without waiting. The thread ends on its own then, and frees what it has.
    ~BackgroundWork() { cancel(); }
    BackgroundWork(const BackgroundWork&) = delete;
    BackgroundWork& operator=(const BackgroundWork&) = delete;

    void cancel() {
        const std::lock_guard lock(_shared->mutex);
        _shared->isCancelled = true;
    }
    /// Waits until the work is finished. Returns: false if it is not within that time.
    bool waitFor(int milliseconds) const {
        std::unique_lock lock(_shared->mutex);
        return _shared->finished.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                          [this] { return _shared->isFinished; });
    }
    bool isFinished() const { return waitFor(0); }
    /// Requires: isFinished(); called once.
    Result take() {
        const std::lock_guard lock(_shared->mutex);
        return std::move(_shared->result);
    }

private:
    struct Shared {
        bool isWanted() {
            const std::lock_guard lock(mutex);
            return !isCancelled;
        }
        void finish(Result made) {
            const std::lock_guard lock(mutex);
            result = std::move(made);
            isFinished = true;
            finished.notify_all();
        }

        std::mutex mutex; // guards the members below
        std::condition_variable finished;
        Result result;
        bool isCancelled = false;
        bool isFinished = false;
    };

    std::shared_ptr<Shared> _shared;
};

} // namespace Atelier::Vel::Viewer
