#include <velmodel/modelcheck.h>

#include <memory>

#include <QtCore/QFileInfo>
#include <QtCore/QTextStream>

#include <velmodel/modelfiles.h>
#include <velmodel/modelsource.h>

#include "check/findinglog.h"
#include "check/linetexts.h"
#include "check/loadfindings.h"
#include "check/objexamination.h"
#include "check/textbytes.h"
#include "drawdata/progressmeter.h"
#include "files/textinput.h"
#include "import/observedload.h"

namespace Atelier::Vel {

namespace {

LoadOptions loadOptionsOf(const CheckOptions& options) {
    LoadOptions load = LoadOptions::forgiving();
    load.files = options.files;
    load.searchPaths = options.searchPaths;
    load.extendedMaterials = true;
    return load;
}

ModelFiles filesOf(const QString& path, const CheckOptions& options) {
    return options.files == LoadOptions::Files::Anywhere ? ModelFiles() : ModelFiles(QFileInfo(path).path());
}

/// The examination of one file.
class ModelExamination {
public:
    /// The arguments must outlive the object.
    ModelExamination(const QString& path, const CheckOptions& options, const LoadProgress& progress)
        : _path(path),
          _files(filesOf(path, options)),
          _options(loadOptionsOf(options)),
          _progress(progress) {}

    /// Throws Cancelled if the progress function cancels.
    ModelCheck run();

private:
    void load();
    void examineBytes();
    void examineCuts();

    const QString& _path;
    ModelFiles _files;
    LoadOptions _options;
    const LoadProgress& _progress;
    LoadReport _report;
    FindingLog _log;
    ModelCheck _check;
    QStringList _notExamined; ///< of the records
};

ModelCheck ModelExamination::run() {
    load();
    if (_check.isLoadable) {
        if (_report.statistics.untriangulatedFaces > 0)
            examineCuts();
        examineBytes();
        _check.notExamined += _notExamined;
    } else {
        _log = FindingLog();
    }
    addLoadFindings(_report, _log);
    if (_check.isLoadable && _check.triangles == 0)
        _log.add(CheckCode::NothingToDraw, {_path}, [](CheckFinding& finding) {
            finding.message = QStringLiteral("Nothing of the file can be drawn: it has no triangles");
        });
    completeFindings(_log, *ModelFiles().source());
    _log.moveTo(_check);
    return _check;
}

// Loads the file as forgivingly as possible, and examines its records meanwhile.
void ModelExamination::load() {
    QString error;
    bool isCancelled = false;
    const LoadProgress watched = [&](const LoadStep& step) {
        isCancelled = _progress && !_progress(step);
        return !isCancelled;
    };
    ObjExamination examination(_path, _files, _options, {}, _log);
    readObservedDrawData(_path, error, watched, _report, _options, examination);
    if (isCancelled)
        throw Cancelled();
    _check.isLoadable = error.isNull();
    _check.triangles = _report.statistics.triangles;
    _notExamined = examination.notExamined();
}

void ModelExamination::examineBytes() {
    const std::unique_ptr<TextInput> text = TextInput::open(*ModelFiles().source(), _path);
    if (!text)
        return;
    text->device().setTextModeEnabled(false);
    const QString encoding = TextBytes(_path, _log).examine(text->device());
    if (!encoding.isNull())
        _check.notExamined.append(encoding);
}

// Examines the records once more, and cuts each polygon by itself. That takes long, so it waits until it is
// known that some cannot be cut.
void ModelExamination::examineCuts() {
    const std::unique_ptr<TextInput> text = TextInput::open(*ModelFiles().source(), _path);
    if (!text)
        return;
    _log = FindingLog();
    FaceExamination::Options faceOptions;
    faceOptions.cutsPolygons = true;
    ObjExamination examination(_path, _files, _options, faceOptions, _log);
    QTextStream stream(&text->device());
    LineSourceOptions lines = LineSourceOptions::joining(true);
    lines.numbersLines = true;
    ProgressMeter meter(_progress);
    meter.begin(LoadPhase::Reading, text->size());
    ObjReader reader(&stream, lines, findWideParser(), {false, false, true});
    while (reader.hasNext()) {
        meter.reach(reader.bytesRead());
        if (reader.kind() != ObjReader::Kind::None)
            examination.takeRecord(reader, reader.read());
        reader.next(examination.run());
        examination.takeRun(reader);
        examination.run().clear();
    }
    examination.finish();
    _notExamined = examination.notExamined();
}

} // namespace

ModelCheck checkOBJFile(const QString& path, const CheckOptions& options, const LoadProgress& progress) {
    try {
        return ModelExamination(path, options, progress).run();
    } catch (const Cancelled&) {
        ModelCheck cancelled;
        cancelled.isCancelled = true;
        return cancelled;
    }
}

} // namespace Atelier::Vel
