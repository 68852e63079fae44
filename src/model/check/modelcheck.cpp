#include <velmodel/modelcheck.h>

#include <memory>
#include <vector>

#include <QtCore/QFileInfo>
#include <QtCore/QTextStream>

#include <velmodel/modelfiles.h>
#include <velmodel/modelsource.h>
#include <velmodel/objloader.h>

#include "check/extentcheck.h"
#include "check/faceexamination.h"
#include "check/findinglog.h"
#include "check/linetexts.h"
#include "check/loadfindings.h"
#include "check/materialcheck.h"
#include "check/normalcheck.h"
#include "check/statements.h"
#include "check/textbytes.h"
#include "check/vertexlines.h"
#include "drawdata/progressmeter.h"
#include "files/textinput.h"
#include "import/obj/objreader.h"

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

LineSourceOptions numberedLines() {
    LineSourceOptions options = LineSourceOptions::joining(true);
    options.numbersLines = true;
    return options;
}

/// One reading of an OBJ file for its examination.
class ObjExamination {
public:
    /// The arguments must outlive the object.
    ObjExamination(TextInput& text, const QString& path, const ModelFiles& files, const LoadOptions& options,
                   const FaceExamination::Options& faceOptions, FindingLog& log);

    /// Throws Cancelled if `meter` does.
    void run(ProgressMeter& meter);
    QStringList notExamined() const { return _notExamined; }

private:
    void takeRun();
    void takeFaces(SectionLines lines);
    void takeRecord();
    void takeFace();
    void finish();

    QString _path;
    qint64 _size;
    FindingLog& _log;
    QTextStream _stream;
    ObjReader _reader;
    std::unique_ptr<ObjRun> _run;
    ObjLineCounts _counts; ///< of the lines that were taken
    std::vector<quint32> _corners;
    StatementCheck _statements;
    NormalCheck _normals;
    VertexLines _vertexLines;
    FaceExamination _faces;
    MaterialCheck _materials;
    QStringList _notExamined;
};

ObjExamination::ObjExamination(TextInput& text, const QString& path, const ModelFiles& files,
                               const LoadOptions& options, const FaceExamination::Options& faceOptions,
                               FindingLog& log)
    : _path(path),
      _size(text.size()),
      _log(log),
      _stream(&text.device()),
      _reader(&_stream, numberedLines(), findWideParser(), {false, false, true}),
      _run(std::make_unique<ObjRun>()),
      _statements(path, log),
      _normals(path, log),
      _faces(path, log, faceOptions),
      _materials(files, path, options, log) {
    _run->takesColours = true;
}

void ObjExamination::run(ProgressMeter& meter) {
    meter.begin(LoadPhase::Reading, _size);
    for (; _reader.hasNext(); _reader.next(*_run), takeRun()) {
        meter.reach(_reader.bytesRead());
        takeRecord();
    }
    finish();
}

// Takes the records that the reader has added to the run, and empties it.
void ObjExamination::takeRun() {
    if (_reader.runBegin() == _reader.runEnd())
        return;
    const std::string_view text(_reader.runBegin(),
                                static_cast<size_t>(_reader.runEnd() - _reader.runBegin()));
    const qint64 firstLine = _reader.lines().lineNumberInMemory(_reader.runBegin());
    const SectionLines lines(text, firstLine, _counts, *_run);
    _statements.examineAdded(text, firstLine, *_run);
    _normals.examineAdded(*_run, lines);
    _vertexLines.addAdded(*_run, lines);
    _faces.addPositions(_run->positions.items, _run->positions.size / 3);
    _faces.addNormals(_run->normals.items, _run->normals.size / 3);
    takeFaces(lines);
    _counts.positions += static_cast<quint32>(_run->positions.size / 3);
    _counts.normals += static_cast<quint32>(_run->normals.size / 3);
    _counts.texCoords += static_cast<quint32>(_run->texCoords.size / 2);
    _run->clear();
}

void ObjExamination::takeFaces(SectionLines lines) {
    const int material = _run->cornerCounts.size > 0 ? _materials.current() : 0;
    size_t first = 0;
    for (size_t i = 0; i < _run->cornerCounts.size; ++i) {
        lines.toFace();
        const quint32 count = _run->cornerCounts.items[i];
        _faces.add({_run->positionIndices.items + first, _run->texCoordIndices.items + first,
                    _run->normalIndices.items + first, count, material, lines.line()},
                   lines.counts());
        first += count;
    }
}

void ObjExamination::takeRecord() {
    const ObjReader::Kind kind = _reader.kind();
    if (kind == ObjReader::Kind::None)
        return;
    const bool isRead = _reader.read();
    _statements.examine(_reader, isRead);
    const qint64 line = _reader.lines().lineNumber();
    if (kind == ObjReader::Kind::Position) {
        ++_counts.positions;
        _vertexLines.add(line);
        _faces.addPositions(_reader.values(), 1);
    } else if (kind == ObjReader::Kind::Normal) {
        ++_counts.normals;
        _normals.examine(_reader.values(), line);
        _faces.addNormals(_reader.values(), 1);
    } else if (kind == ObjReader::Kind::TexCoord) {
        ++_counts.texCoords;
    } else if (kind == ObjReader::Kind::Face && isRead) {
        takeFace();
    } else if (kind == ObjReader::Kind::MaterialLibrary) {
        _materials.takeLibraries(_reader.rest());
    } else if (kind == ObjReader::Kind::UseMaterial) {
        _materials.use({_reader.text(), _reader.rest()});
    }
}

void ObjExamination::takeFace() {
    const auto count = static_cast<size_t>(_reader.cornerCount());
    _corners.resize(3 * count);
    for (size_t i = 0; i < count; ++i) {
        const ObjCorner corner = _reader.corner(static_cast<int>(i));
        _corners[i] = corner.position;
        _corners[count + i] = corner.texCoord;
        _corners[2 * count + i] = corner.normal;
    }
    const quint32* const corners = _corners.data();
    _faces.add({corners, corners + count, corners + 2 * count, static_cast<quint32>(count),
                _materials.current(), _reader.lines().lineNumber()},
               _counts);
}

void ObjExamination::finish() {
    _notExamined = _statements.finish();
    _faces.finish(_counts);
    _materials.finish(_faces.materials(), _counts);
    if (_counts.normals == 0 && !_faces.materials().empty())
        _log.add(CheckCode::NormalsMissing, {_path}, [](CheckFinding& finding) {
            finding.message = QStringLiteral("The file has no normals: smooth ones can be generated");
        });
    if (_faces.isComplete()) {
        _vertexLines.reportUnused(_path, _faces.used(), _log);
        examineExtent(_path, _faces.positions(), _faces.used(), _log);
    }
    _notExamined += _faces.notExamined() + _materials.notExamined();
}

/// Examines a text from its beginning. Throws Cancelled if `meter` does.
QStringList examineText(const QString& path, const CheckOptions& options, bool cutsPolygons,
                        ProgressMeter& meter, FindingLog& log) {
    const std::shared_ptr<ModelSource> source = ModelFiles().source();
    const std::unique_ptr<TextInput> bytes = TextInput::open(*source, path);
    const std::unique_ptr<TextInput> text = TextInput::open(*source, path);
    if (!bytes || !text)
        return {};
    bytes->device().setTextModeEnabled(false);
    QStringList notExamined;
    const QString encoding = TextBytes(path, log).examine(bytes->device());
    if (!encoding.isNull())
        notExamined.append(encoding);
    const ModelFiles files = filesOf(path, options);
    const LoadOptions loadOptions = loadOptionsOf(options);
    FaceExamination::Options faceOptions;
    faceOptions.cutsPolygons = cutsPolygons;
    ObjExamination examination(*text, path, files, loadOptions, faceOptions, log);
    examination.run(meter);
    return notExamined + examination.notExamined();
}

/// Loads a file as forgivingly as possible. Returns: whether it was cancelled.
bool load(const QString& path, const CheckOptions& options, const LoadProgress& progress, ModelCheck& check,
          LoadReport& report, FindingLog& log) {
    QString error;
    bool isCancelled = false;
    const LoadProgress watched = [&](const LoadStep& step) {
        isCancelled = progress && !progress(step);
        return !isCancelled;
    };
    readDrawDataFromOBJFile(path, error, watched, &report, loadOptionsOf(options));
    check.isLoadable = error.isNull();
    check.triangles = report.statistics.triangles;
    addLoadFindings(report, log);
    return isCancelled;
}

} // namespace

ModelCheck checkOBJFile(const QString& path, const CheckOptions& options, const LoadProgress& progress) {
    ModelCheck check;
    FindingLog log;
    LoadReport report;
    ModelCheck cancelled;
    cancelled.isCancelled = true;
    if (load(path, options, progress, check, report, log))
        return cancelled;
    if (check.isLoadable) {
        ProgressMeter meter(progress);
        try {
            const bool cutsPolygons = report.statistics.untriangulatedFaces > 0;
            check.notExamined = examineText(path, options, cutsPolygons, meter, log);
        } catch (const Cancelled&) {
            return cancelled;
        }
        if (check.triangles == 0)
            log.add(CheckCode::NothingToDraw, {path}, [](CheckFinding& finding) {
                finding.message = QStringLiteral("Nothing of the file can be drawn: it has no triangles");
            });
    }
    completeFindings(log, *ModelFiles().source());
    log.moveTo(check);
    return check;
}

} // namespace Atelier::Vel
