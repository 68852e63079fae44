#include "check/objexamination.h"

#include <string_view>

#include "check/extentcheck.h"

namespace Atelier::Vel {

ObjExamination::ObjExamination(const QString& path, const ModelFiles& files, const LoadOptions& options,
                               const FaceExamination::Options& faceOptions, FindingLog& log)
    : _path(path),
      _log(log),
      _run(std::make_unique<ObjRun>()),
      _statements(path, log),
      _normals(path, log),
      _materials(files, path, options, log) {
    _faces.emplace(path, log, faceOptions);
    _run->takesColours = true;
}

void ObjExamination::takeRun(const ObjReader& reader) {
    if (reader.runBegin() == reader.runEnd())
        return;
    const std::string_view text(reader.runBegin(), static_cast<size_t>(reader.runEnd() - reader.runBegin()));
    const qint64 firstLine = reader.lines().lineNumberInMemory(reader.runBegin());
    const SectionLines lines(text, firstLine, _counts, *_run);
    _statements.examineAdded(text, firstLine, *_run);
    _normals.examineAdded(*_run, lines);
    _vertexLines.addAdded(*_run, lines);
    _faces->addPositions(_run->positions.items, _run->positions.size / 3);
    _faces->addNormals(_run->normals.items, _run->normals.size / 3);
    takeFaces(lines);
    _counts.positions += static_cast<quint32>(_run->positions.size / 3);
    _counts.normals += static_cast<quint32>(_run->normals.size / 3);
    _counts.texCoords += static_cast<quint32>(_run->texCoords.size / 2);
}

void ObjExamination::takeFaces(SectionLines lines) {
    const int material = _run->cornerCounts.size > 0 ? _materials.current() : 0;
    size_t first = 0;
    for (size_t i = 0; i < _run->cornerCounts.size; ++i) {
        lines.toFace();
        const quint32 count = _run->cornerCounts.items[i];
        _faces->add({_run->positionIndices.items + first, _run->texCoordIndices.items + first,
                     _run->normalIndices.items + first, count, material, lines.line()},
                    lines.counts());
        first += count;
    }
}

void ObjExamination::takeRecord(const ObjReader& reader, bool isRead) {
    const ObjReader::Kind kind = reader.kind();
    _statements.examine(reader, isRead);
    const qint64 line = reader.lines().lineNumber();
    if (kind == ObjReader::Kind::Position) {
        ++_counts.positions;
        _vertexLines.add(line);
        _faces->addPositions(reader.values(), 1);
    } else if (kind == ObjReader::Kind::Normal) {
        ++_counts.normals;
        _normals.examine(reader.values(), line);
        _faces->addNormals(reader.values(), 1);
    } else if (kind == ObjReader::Kind::TexCoord) {
        ++_counts.texCoords;
    } else if (kind == ObjReader::Kind::Face && isRead) {
        takeFace(reader);
    } else if (kind == ObjReader::Kind::MaterialLibrary) {
        _materials.takeLibraries(reader.rest());
    } else if (kind == ObjReader::Kind::UseMaterial) {
        _materials.use({reader.text(), reader.rest()});
    }
}

void ObjExamination::takeFace(const ObjReader& reader) {
    const auto count = static_cast<size_t>(reader.cornerCount());
    _corners.resize(3 * count);
    for (size_t i = 0; i < count; ++i) {
        const ObjCorner corner = reader.corner(static_cast<int>(i));
        _corners[i] = corner.position;
        _corners[count + i] = corner.texCoord;
        _corners[2 * count + i] = corner.normal;
    }
    const quint32* const corners = _corners.data();
    _faces->add({corners, corners + count, corners + 2 * count, static_cast<quint32>(count),
                 _materials.current(), reader.lines().lineNumber()},
                _counts);
}

void ObjExamination::finish() {
    _notExamined = _statements.finish();
    _faces->finish(_counts);
    _materials.finish(_faces->materials(), _counts);
    if (_counts.normals == 0 && !_faces->materials().empty())
        _log.add(CheckCode::NormalsMissing, {_path}, [](CheckFinding& finding) {
            finding.message = QStringLiteral("The file has no normals: smooth ones can be generated");
        });
    if (_faces->isComplete()) {
        _vertexLines.reportUnused(_path, _faces->used(), _log);
        examineExtent(_path, _faces->positions(), _faces->used(), _log);
    }
    _notExamined += _faces->notExamined() + _materials.notExamined();
    _faces.reset();
    _vertexLines = VertexLines();
}

} // namespace Atelier::Vel
