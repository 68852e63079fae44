#pragma once

#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <new>

#include <QtCore/QString>

#include <velmodel/decodedtextures.h>
#include <velmodel/drawdata.h>
#include <velmodel/objloader.h>

/// Loads an OBJ file and decodes its textures on a thread of its own. The public functions are for the thread
/// of the window. The destructor cancels the load and waits for its thread to end.
class BackgroundLoad {
public:
    struct Result {
        Atelier::Vel::DrawData data; ///< null on failure, and for a file without faces
        Atelier::Vel::DecodedTextures textures;
        QString error;
    };

    explicit BackgroundLoad(const QString& path)
        : _result(std::async(std::launch::async, [this, path] { return load(path); })) {}
    ~BackgroundLoad() { cancel(); }
    BackgroundLoad(const BackgroundLoad&) = delete;
    BackgroundLoad& operator=(const BackgroundLoad&) = delete;

    void cancel() {
        const std::lock_guard lock(_mutex);
        _isCancelled = true;
        _changed.notify_one();
    }
    /// To be called for each frame. Returns: the part of the load that is done, from 0 to 1.
    float progressOfFrame() {
        const std::lock_guard lock(_mutex);
        _isShown = true;
        _changed.notify_one();
        return _done;
    }
    bool isReady() const { return _result.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }
    /// Can be called once. Waits until the result is ready.
    Result takeResult() { return _result.get(); }

private:
    Result load(const QString& path) {
        Result result;
        try {
            const auto progress = [this](const Atelier::Vel::LoadStep& step) {
                return reached(static_cast<int>(step.phase), step.done, step.total);
            };
            result.data = Atelier::Vel::readDrawDataFromOBJFile(path, result.error, progress);
            decodeTextures(result);
        } catch (const std::bad_alloc&) {
            result.error = QStringLiteral("Not enough memory for '%1'").arg(path);
        }
        return result;
    }

    void decodeTextures(Result& result) {
        const auto progress = [this](const Atelier::Vel::DecodeStep& step) {
            return reached(kPhases, step.done, step.total);
        };
        if (!result.textures.decode(result.data.texturePaths(), progress)) {
            result.data = {};
            result.error = QStringLiteral("Decoding textures was cancelled");
        }
    }

    // Called on the thread of the load. `phase` is that of the file, or kPhases for the textures. Waits for
    // the first frame: the load of a small file does not end before the window is there. Returns: false to
    // cancel.
    bool reached(int phase, qint64 done, qint64 total) {
        std::unique_lock lock(_mutex);
        _done = (static_cast<float>(phase) + static_cast<float>(done) / static_cast<float>(total)) /
                (kPhases + 1);
        _changed.wait(lock, [this] { return _isShown || _isCancelled; });
        return !_isCancelled;
    }

    static constexpr int kPhases = 4; // up to the normals; this load does not optimise

    std::mutex _mutex; // guards the three values that both threads use
    float _done = 0;
    bool _isShown = false;
    bool _isCancelled = false;
    std::condition_variable _changed;
    // Destroyed first, because it is the last member: its destructor waits for the thread, which uses the
    // other members.
    std::future<Result> _result;
};
