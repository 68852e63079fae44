#include "check/materialcheck.h"

#include <utility>

#include <QtCore/QTextStream>

#include "check/linewords.h"
#include "check/textbytes.h"
#include "files/textinput.h"
#include "import/text/names.h"

namespace Atelier::Vel {

namespace {

using Kind = MtlReader::Kind;

// The faces before the first "usemtl".
QString defaultGroup() {
    return QStringLiteral("<default>");
}

} // namespace

MaterialCheck::MaterialCheck(const ModelFiles& files, const QString& model, const LoadOptions& options,
                             FindingLog& log)
    : _model(model),
      _options(options),
      _log(log),
      _source(files.source()),
      _definitions(_mesh.groups, options, _diagnostics),
      _references(*_source, model, options, _diagnostics),
      _textures(files, model, options.searchPaths, log),
      _used{defaultGroup(), defaultGroup()} {
    _mesh.groups.create(defaultGroup(), InstanceData(), -1, 0);
}

void MaterialCheck::takeLibraries(const QString& rest) {
    const QStringList words = wordsOf(withoutComment(rest));
    if (words.size() < 2) {
        takeLibrary(words.value(0));
        return;
    }
    QStringList wholes = nameCandidates(rest);
    wholes.removeLast();
    for (const QString& whole : qAsConst(wholes))
        if (takeLibrary(whole))
            return;
    for (const QString& word : words)
        takeLibrary(word);
}

bool MaterialCheck::takeLibrary(const QString& name) {
    const QString path = _references.find(LoadDiagnostic::Code::RelocatedLibrary, TextLine{_model}, name);
    if (_read.contains(path))
        return true;
    const std::unique_ptr<TextInput> text = TextInput::open(*_source, path);
    if (!text)
        return false;
    _read.insert(path);
    const QString notExamined = TextBytes(path, _log).examine(*_source->open(path));
    if (!notExamined.isNull())
        _notExamined.append(notExamined);
    readLibrary(*text, path);
    return true;
}

void MaterialCheck::readLibrary(TextInput& text, const QString& path) {
    QTextStream stream(&text.device());
    LineSourceOptions lines = LineSourceOptions::joining(_options.repairs.joinContinuedLines);
    lines.numbersLines = true;
    MtlReader reader(&stream, false, lines,
                     {_options.repairs.matchNames, _options.repairs.parseMapOptions, true});
    for (reader.next(); reader.hasNext(); reader.next())
        takeLine(reader, path);
    finishMaterial();
}

void MaterialCheck::takeLine(MtlReader& reader, const QString& path) {
    LineWords words;
    words.take(reader.lines());
    if (words.count() == 0)
        return;
    const FindingPlace place = {path, reader.lines().lineNumber(), words.column(0)};
    if (reader.kind() == Kind::Unknown) {
        if (!isIrrelevantMtlKeyword(words.text(0)))
            _skipped.add(words.text(0), place);
        return;
    }
    const bool isRead = reader.read();
    if (isNumeric(reader.kind()))
        examineCommas(reader, place);
    if (!isRead)
        return reportUnread(reader, place);
    if (reader.kind() == Kind::NewMtl)
        return startMaterial(reader, place);
    Vel::takeLine(_material, reader, place);
    if (isMap(reader.kind()))
        examineMap(reader, place);
}

void MaterialCheck::examineMap(const MtlReader& reader, const FindingPlace& place) {
    const QStringList names = reader.mapNames();
    const QString line = reader.lines().text(reader.lines().begin(), reader.lines().end());
    // A name in quotes begins behind them.
    const int at = line.indexOf(names.first(), place.column);
    _textures.examine(place.file, names, {place.file, place.line, at < 0 ? place.column : at + 1});
}

void MaterialCheck::reportUnread(const MtlReader& reader, const FindingPlace& place) {
    const QString line = reader.lines().text(reader.lines().begin(), reader.lines().end()).trimmed();
    _log.add(CheckCode::NumberMissing, place, [&line](CheckFinding& finding) {
        finding.text = line;
        finding.message =
            QStringLiteral("An operand of the line is missing or is no number: it has no effect");
    });
}

void MaterialCheck::examineCommas(const MtlReader& reader, const FindingPlace& place) {
    LineWords words;
    words.take(reader.lines());
    for (int word = 1; word < words.count(); ++word) {
        if (numberIn(words, word) != NumberWord::DecimalComma)
            continue;
        const FindingPlace at = {place.file, place.line, words.column(word)};
        return _log.add(CheckCode::DecimalComma, at, [&](CheckFinding& finding) {
            finding.text = words.text(word);
            finding.message =
                QStringLiteral("'%1' has a decimal comma in place of a point: the number ends before it")
                    .arg(finding.text);
        });
    }
}

void MaterialCheck::startMaterial(const MtlReader& reader, const FindingPlace& place) {
    finishMaterial();
    const MaterialName name = {reader.text(), reader.rest()};
    const quint64 revision = _definitions.revision();
    _definitions.define(name, InstanceData(), {});
    const QString group = _definitions.groupOf(name);
    if (_definitions.revision() == revision) {
        _log.add(CheckCode::MaterialDefinedTwice, place, [&group](CheckFinding& finding) {
            finding.text = group;
            finding.message =
                QStringLiteral("The material '%1' is already defined: this definition has no effect")
                    .arg(group);
        });
        return;
    }
    _hasMaterial = true;
    _material = CheckedMaterial();
    _material.name = group;
    _material.place = place;
}

void MaterialCheck::finishMaterial() {
    if (!std::exchange(_hasMaterial, false))
        return;
    examineMaterial(_material, _log);
    _defined.append(_material);
    if (_material.hasMap)
        _mapped.insert(_material.name);
}

void MaterialCheck::use(MaterialName name) {
    _used = std::move(name);
    _current = -1;
}

int MaterialCheck::current() {
    if (_current < 0 || _revision != _definitions.revision()) {
        _revision = _definitions.revision();
        _current = numberOf(_definitions.groupOf(_used));
    }
    return _current;
}

int MaterialCheck::numberOf(const QString& group) {
    const auto known = _numbers.constFind(group);
    if (known != _numbers.constEnd())
        return *known;
    _groups.append(group);
    return *_numbers.insert(group, _groups.size() - 1);
}

void MaterialCheck::finish(const std::vector<MaterialFaces>& faces, const ObjLineCounts& counts) {
    _skipped.report(_log, purposeOfMtlKeyword);
    reportUnused(faces);
    for (std::size_t number = 0; number < faces.size(); ++number)
        reportMissing(static_cast<int>(number), faces[number], counts);
}

void MaterialCheck::reportUnused(const std::vector<MaterialFaces>& faces) {
    for (const CheckedMaterial& material : qAsConst(_defined)) {
        const auto number = static_cast<std::size_t>(_numbers.value(material.name, _groups.size()));
        if (number < faces.size() && faces[number].faces > 0)
            continue;
        _log.add(CheckCode::MaterialUnused, material.place, [&material](CheckFinding& finding) {
            finding.text = material.name;
            finding.message = QStringLiteral("No face uses the material '%1'").arg(material.name);
        });
    }
}

// A file without any normals is reported as a whole.
void MaterialCheck::reportMissing(int number, const MaterialFaces& faces, const ObjLineCounts& counts) {
    const QString name = _groups.value(number);
    const auto describe = [&](quint64 count, const QString& consequence) {
        return QStringLiteral("%1 of %2 faces with the material '%3' have %4")
            .arg(QString::number(count), QString::number(faces.faces), name, consequence);
    };
    if (faces.withoutTexCoords > 0 && _mapped.contains(name))
        _log.add(
            CheckCode::TexCoordsMissing, {_model, faces.firstWithoutTexCoords, 0},
            [&](CheckFinding& finding) {
                finding.text = name;
                finding.message =
                    describe(faces.withoutTexCoords, QStringLiteral("no texture coordinates for its maps"));
            },
            faces.withoutTexCoords);
    if (faces.withoutNormals > 0 && counts.normals > 0)
        _log.add(
            CheckCode::NormalsMissing, {_model, faces.firstWithoutNormals, 0},
            [&](CheckFinding& finding) {
                finding.text = name;
                finding.message = describe(
                    faces.withoutNormals, QStringLiteral("corners without a normal, and get generated ones"));
            },
            faces.withoutNormals);
}

QStringList MaterialCheck::notExamined() const {
    return _notExamined + _textures.notExamined();
}

} // namespace Atelier::Vel
