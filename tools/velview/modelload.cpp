#include "modelload.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <utility>

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>

#include <velmodel/objloader.h>

#include "loaderrors.h"

namespace Atelier::Vel::Viewer {

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("ModelLoad", text);
}

} // namespace

QString stageName(LoadStage stage) {
    static const char* const kNames[kLoadStages] = {
        QT_TRANSLATE_NOOP("ModelLoad", "Reading"),       QT_TRANSLATE_NOOP("ModelLoad", "Merging"),
        QT_TRANSLATE_NOOP("ModelLoad", "Triangulating"), QT_TRANSLATE_NOOP("ModelLoad", "Making normals"),
        QT_TRANSLATE_NOOP("ModelLoad", "Optimising"),    QT_TRANSLATE_NOOP("ModelLoad", "Examining"),
        QT_TRANSLATE_NOOP("ModelLoad", "Decoding")};
    return tr(kNames[static_cast<int>(stage)]);
}

/// What the window and the thread share during a load.
class ModelLoad::Meter {
public:
    LoadState state() const {
        const std::lock_guard lock(_mutex);
        return _state;
    }
    void set(LoadStage stage, double done) {
        const std::lock_guard lock(_mutex);
        _state = {stage, std::max(_state.done, done)};
    }

private:
    mutable std::mutex _mutex;
    LoadState _state;
};

/// The work of the thread.
class ModelLoad::Reader {
public:
    Reader(LoadRequest request, Meter& meter, const BackgroundWork<ReadModel>::IsWanted& isWanted)
        : _request(std::move(request)), _meter(meter), _isWanted(isWanted) {
        _model.path = _request.path;
        if (_request.options.files == LoadOptions::Files::InOwnFolder)
            _model.files = ModelFiles(QFileInfo(_request.path).path());
        _model.textures = DecodedTextures(_model.files);
    }

    ReadModel run() {
        _timer.start();
        try {
            readAll();
        } catch (const std::bad_alloc&) {
            _model.error = tr("%1: There is not enough memory for it").arg(_request.path);
        }
        if (!_model.error.isNull()) {
            _model.data = {};
            _model.textures = DecodedTextures();
        }
        return std::move(_model);
    }

private:
    void readAll() {
        if (!readData())
            return;
        _model.cache = _model.data.vertexCacheStatistics();
        _model.contents = contentsOf(_model.data, _model.files, _model.report);
        _model.picker = ModelPicker(_model.data);
        if (!_model.contents.box.isValid)
            fail(tr("%1: There is nothing to draw: no position is finite").arg(_request.path));
        else if (!reach(LoadStage::Decoding, 0, 1) || !decode() || !reach(LoadStage::Decoding, 1, 1))
            cancelled();
        close();
    }

    bool readData() {
        const LoadProgress progress = [this](const LoadStep& step) {
            return reach(static_cast<LoadStage>(step.phase), step.done, step.total);
        };
        QString error;
        _model.data =
            readDrawDataFromOBJFile(_request.path, error, progress, &_model.report, _request.options);
        if (!_isWanted())
            return cancelled();
        if (!error.isNull())
            return fail(Tool::errorLine(error, _model.report));
        if (_model.data.isEmpty())
            return fail(tr("%1: There is nothing to draw: the model has no triangles").arg(_request.path));
        if (_request.isOptimised)
            _model.data = _model.data.optimised(progress);
        return reach(LoadStage::Examining, 0, 1) || cancelled();
    }

    bool decode() {
        return _model.textures.decode(_model.data.texturePaths(), [this](const DecodeStep& step) {
            return reach(LoadStage::Decoding, step.done, step.total);
        });
    }

    bool fail(const QString& error) {
        _model.error = error;
        return false;
    }

    bool cancelled() {
        _model.isCancelled = true;
        return fail(tr("Loading was cancelled"));
    }

    // Notes the time of the stages. Returns: false to cancel.
    bool reach(LoadStage stage, qint64 done, qint64 total) {
        if (stage != _stage)
            close();
        _stage = stage;
        const double ofStage = total > 0 ? std::min(double(done) / double(total), 1.0) : 0;
        _meter.set(stage, (static_cast<int>(stage) + ofStage) / kLoadStages);
        return _isWanted();
    }

    // Ends the time of the stage.
    void close() {
        const qint64 now = _timer.nsecsElapsed();
        _model.milliseconds[static_cast<int>(_stage)] += double(now - _since) * 1e-6;
        _since = now;
    }

    LoadRequest _request;
    Meter& _meter;
    const BackgroundWork<ReadModel>::IsWanted& _isWanted;
    ReadModel _model;
    LoadStage _stage = LoadStage::Reading;
    QElapsedTimer _timer;
    qint64 _since = 0;
};

ModelLoad::ModelLoad(const LoadRequest& request)
    : _meter(std::make_shared<Meter>()),
      _work([meter = _meter, request](const BackgroundWork<ReadModel>::IsWanted& isWanted) {
          return Reader(request, *meter, isWanted).run();
      }) {}

LoadState ModelLoad::state() const {
    return _meter->state();
}

} // namespace Atelier::Vel::Viewer
