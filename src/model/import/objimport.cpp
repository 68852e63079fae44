#include "import/objimport.h"

#include <limits>

#include "drawdata/preparation.h"
#include "import/attributenames.h"
#include "import/facecheck.h"
#include "import/missingnormals.h"
#include "mesh/unplacedfaces.h"

namespace Atelier::Vel {

namespace {

ObjKeywords keywordsOf(const LoadOptions& options, bool hasObserver) {
    return {options.normals.kind == NormalOptions::Kind::SmoothingGroups, options.splitObjects, hasObserver};
}

LineSourceOptions linesOf(const LoadOptions& options, DiagnosticLog::Use diagnostics) {
    LineSourceOptions lines = LineSourceOptions::joining(options.repairs.joinContinuedLines);
    lines.numbersLines = diagnostics == DiagnosticLog::Use::Kept;
    return lines;
}

} // namespace

QString loadFailure(const QString& path) {
    return QStringLiteral("Failed to load OBJ file '%1'").arg(path);
}

ObjImport::ObjImport(TextInput& text, const QString& path, ModelSource& source, const LoadOptions& options,
                     DiagnosticLog::Use diagnostics, RecordObserver* observer)
    : _text(text),
      _path(path),
      _fileSize(text.size()),
      _options(options),
      _observer(observer),
      _diagnostics(diagnostics),
      _references(source, path, options, _diagnostics),
      _materials(_mesh.groups, options, _diagnostics),
      _libraries(source, _references, options, _materials, _diagnostics),
      _libraryLines(_libraries, _references, options.repairs, _diagnostics),
      _groups(_mesh.groups, _materials,
              options.splitObjects ? FaceGroups::Parts::Split : FaceGroups::Parts::Joined),
      _stream(&text.device()),
      _reader(&_stream, linesOf(options, diagnostics), findWideParser(),
              keywordsOf(options, observer != nullptr)),
      _feed(_mesh, _groups) {
    if (options.vertexColours)
        _feed.takeColours();
    if (completesNormals(options))
        _feed.alignNormals();
    _mesh.groups.create(QStringLiteral("<default>"), makeDefaultMaterialWithoutMaps(layoutOf(options)), -1, 0,
                        defaultWhiteMaps());
}

bool ObjImport::readText(ProgressMeter& meter, QString& error) {
    if (!readRecords(meter, error))
        return false;
    const IndexFaults faults = _diagnostics.isKept() ? findIndexFaults(_mesh) : IndexFaults();
    if (_options.repairs.dropUnplacedFaces)
        removeUnplacedFaces();
    completeNormals(meter);
    if (isTooLarge(error))
        return false;
    if (!_text.isReadToTheEnd()) {
        reportFailure(Code::UnreadableFile, QStringLiteral("Reading fails before the end of the file"));
        error = loadFailure(_path);
        return false;
    }
    checkFaces(faults, meter);
    return true;
}

bool ObjImport::readRecords(ProgressMeter& meter, QString& error) {
    meter.begin(LoadPhase::Reading, _fileSize);
    for (; _reader.hasNext(); readNext()) {
        if (isTooLarge(error))
            return false;
        meter.reach(bytesRead());
        if (!takeRecord(error))
            return false;
    }
    _feed.finish();
    if (_observer != nullptr)
        _observer->finish();
    meter.reach(bytesRead());
    return true;
}

void ObjImport::readNext() {
    if (_observer == nullptr)
        return _reader.next(_feed.run());
    ObjRun& run = _observer->run();
    _reader.next(run);
    _observer->takeRun(_reader);
    _feed.addRun(run);
    run.clear();
}

void ObjImport::reportFailure(Code code, const QString& message) {
    _diagnostics.add(code, {_path}, QString(), [&] { return message; });
}

bool ObjImport::isTooLarge(QString& error) {
    if (_mesh.streams.refused().isEmpty())
        return false;
    reportFailure(Code::TooLarge, QStringLiteral("The file holds more than %1 bytes for one stream")
                                      .arg(std::numeric_limits<qint32>::max()));
    error = loadFailure(_path);
    return true;
}

bool ObjImport::takeRecord(QString& error) {
    const bool isRead = _reader.read();
    if (_observer != nullptr && _reader.kind() != ObjReader::Kind::None)
        _observer->takeRecord(_reader, isRead);
    if (!isRead) {
        dropFace();
    } else if (_reader.kind() == ObjReader::Kind::UseMaterial) {
        const bool needsRest = _options.repairs.matchNames;
        _feed.useMaterial({_reader.text(), needsRest ? _reader.rest() : QString(), _reader.line(_path)});
    } else if (_reader.kind() == ObjReader::Kind::Object) {
        _feed.useObject(_reader.text());
    } else if (_reader.kind() == ObjReader::Kind::Group) {
        _feed.useGroup(_reader.text());
    } else if (_reader.kind() == ObjReader::Kind::MaterialLibrary) {
        return loadLibraries(error);
    } else if (_reader.kind() == ObjReader::Kind::SmoothingGroup) {
        _smoothingGroups.begin(_feed.nextFace(), _reader.text());
    } else {
        _feed.addRecord(_reader);
    }
    return true;
}

// Only a face can be unreadable, as long as there is a line.
void ObjImport::dropFace() {
    if (_reader.kind() != ObjReader::Kind::Face)
        return;
    ++_droppedFaces;
    const QString corner = _reader.badCorner();
    _diagnostics.add(Code::MalformedFace, _reader.line(_path), corner, [&] {
        return QStringLiteral("The corner '%1' is not an integer, and the face is dropped").arg(corner);
    });
}

qint64 ObjImport::bytesRead() const {
    return _fileSize < 0 ? _text.sequentialBytes() : _reader.bytesRead();
}

bool ObjImport::loadLibraries(QString& error) {
    _feed.flush();
    const TextLine line = _reader.line(_path);
    return _options.repairs.matchNames ? _libraryLines.loadMatching(line, _reader.rest(), error)
                                       : _libraryLines.load(line, _reader.text(), error);
}

void ObjImport::removeUnplacedFaces() {
    const std::vector<quint32> removed = Vel::removeUnplacedFaces(_mesh, positionAttribute());
    _smoothingGroups.remove(removed);
    _unplacedFaces = removed.size();
}

void ObjImport::completeNormals(ProgressMeter& meter) {
    const quint64 completed = Vel::completeNormals(_mesh, _options, _smoothingGroups, meter);
    _completedCorners = _options.repairs.generateMissingNormals ? completed : 0;
}

// Reports indices that do not exist, with their lines if the text can be read again.
void ObjImport::checkFaces(const IndexFaults& faults, ProgressMeter& meter) {
    const bool isFaulty = faults.any() || _unplacedFaces != 0 || _completedCorners != 0;
    if (_diagnostics.isKept() && isFaulty && !checkFacesByLine(meter))
        reportWholeFile(faults);
}

// Returns: false if the text cannot be read again, or is another one by now.
bool ObjImport::checkFacesByLine(ProgressMeter& meter) {
    if (!_text.rewind())
        return false;
    QTextStream stream(&_text.device());
    ObjReader reader(&stream, linesOf(_options, DiagnosticLog::Use::Kept));
    DiagnosticLog log = _diagnostics;
    FaceCheck(_path, _reader.counts(), _options.repairs, log).read(reader, [&meter] { meter.poll(); });
    const bool isSame = _text.isReadToTheEnd() && reader.counts() == _reader.counts();
    if (isSame)
        _diagnostics = log;
    return isSame;
}

void ObjImport::reportWholeFile(const IndexFaults& faults) {
    const auto report = [&](Code code, quint64 count, const QString& message) {
        if (count != 0)
            _diagnostics.add(
                code, {_path}, QString(), [&] { return message; }, count);
    };
    const LoadRepairs& repairs = _options.repairs;
    report(Code::UnplacedFace, _unplacedFaces,
           _unplacedFaces == 1 ? QStringLiteral("1 face has a corner without a position, and is dropped")
                               : QStringLiteral("%1 faces have a corner without a position, and are dropped")
                                     .arg(_unplacedFaces));
    report(Code::MissingPosition, faults.positions && !repairs.dropUnplacedFaces ? 1 : 0,
           QStringLiteral("Faces have positions that do not exist, and their corners lie in the origin"));
    report(Code::MissingTexCoord, faults.texCoords ? 1 : 0,
           QStringLiteral("Faces have texture coordinates that do not exist, and their corners get zeros"));
    report(Code::MissingNormals, _completedCorners != 0 ? 1 : 0, describeMissingNormals(_completedCorners));
    report(Code::MissingNormal, faults.normals && !repairs.generateMissingNormals ? 1 : 0,
           QStringLiteral("Faces have normals that do not exist, and their corners get zeros"));
}

bool ObjImport::hasMesh() const {
    return _mesh.isComplete() && _mesh.attributes.contains(positionAttribute());
}

DrawData ObjImport::prepare(ProgressMeter& meter) {
    Preparation preparation(_mesh, 0, this);
    DrawData data = preparation.prepare(positionAttribute(), meter);
    _statistics = preparation.statistics();
    return data;
}

LoadReport ObjImport::report() const {
    LoadReport report;
    report.bytesRead = _fileSize < 0 ? bytesRead() : _fileSize;
    report.faces = _feed.faces() - _unplacedFaces;
    report.droppedFaces = _droppedFaces + _unplacedFaces;
    report.facesWithoutGroup = _feed.facesWithoutGroup();
    report.statistics = _statistics;
    _diagnostics.copyTo(report);
    report.files = _references.files();
    return report;
}

} // namespace Atelier::Vel
