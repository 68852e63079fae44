#include "import/mtl/materialcollector.h"

#include <utility>

#include "import/mtl/mapoptions.h"
#include "import/mtl/mtlreader.h"
#include "import/references/filereferences.h"

namespace Atelier::Vel {

namespace {

using Code = LoadDiagnostic::Code;

bool isDirections(MtlReader::Kind map) {
    return map == MtlReader::Kind::Norm || map == MtlReader::Kind::MapKn;
}

} // namespace

MaterialCollector::MaterialCollector(QString path, MaterialDefinitions& definitions,
                                     FileReferences& references, const LoadOptions& options,
                                     DiagnosticLog& diagnostics)
    : _path(std::move(path)),
      _definitions(definitions),
      _references(references),
      _repairs(options.repairs),
      _diagnostics(diagnostics),
      _layout(layoutOf(options)),
      _blank(materialPlanName(_layout)),
      _material(materialPlanName(_layout)) {
    setInitialValues(_blank, _layout);
}

void MaterialCollector::finishMaterial() {
    if (_hasMaterial)
        _definitions.define(_name, _isBlank ? _blank : _material, _whiteMaps);
}

void MaterialCollector::startMaterial(const MtlReader& line) {
    finishMaterial();
    // Not a copy of the blank one, because QMap leaks memory if an allocation fails when it detaches a copy.
    _material.clear();
    setInitialValues(_material, _layout);
    _hasOpacity = false;
    _whiteMaps = WhiteMaps();
    _isBlank = true;
    _name = {line.text(), _repairs.matchNames ? line.rest() : QString(), line.line(_path)};
    _hasMaterial = true;
}

// The path of the file that the line names.
QString MaterialCollector::findMap(const MtlReader& line) {
    const TextLine place = line.line(_path);
    const QStringList names = _repairs.findFiles ? line.mapNames() : QStringList(line.text());
    const FileReferences::Found found = _references.findFirst(Code::RelocatedTexture, place, names);
    _references.list(ReferencedFile::Kind::Texture, place, names, found.path, found.isMissing);
    if (found.name != line.firstWord())
        _diagnostics.add(Code::MapName, place, line.rest(), [&] {
            return QStringLiteral("'%1' names the file '%2'").arg(line.rest(), found.path);
        });
    return found.path;
}

// An unreadable texture is drawn as white. White is no direction.
void MaterialCollector::setMap(const QString& name, const MtlReader& line) {
    const QString path = findMap(line);
    if (_references.isAllowed(path)) {
        _material.setTexture(name, path);
        _whiteMaps.set(name, false);
        return;
    }
    _references.warnOfOutside(path);
    _diagnostics.add(Code::UnreadableTexture, line.line(_path), line.text(), [&] {
        return QStringLiteral("'%1': %2; it is drawn as white")
            .arg(line.text(), _references.causeOfUnreadable(path));
    });
    if (isDirections(line.kind()))
        return;
    _material.setTexture(name, QString());
    _whiteMaps.set(name, true);
}

void MaterialCollector::take(const MtlReader& line) {
    if (line.kind() == MtlReader::Kind::NewMtl)
        return startMaterial(line);
    _isBlank = false;
    switch (line.kind()) {
    case MtlReader::Kind::Ka:
        return setColour(_material, QStringLiteral("Ka"), line.values());
    case MtlReader::Kind::Kd:
        return setColour(_material, QStringLiteral("Kd"), line.values());
    case MtlReader::Kind::Ks:
        return setColour(_material, QStringLiteral("Ks"), line.values());
    case MtlReader::Kind::Ns:
        return setScalar(_material, QStringLiteral("Ns"), *line.values());
    case MtlReader::Kind::D:
        _hasOpacity = true;
        return setScalar(_material, QStringLiteral("d"), *line.values());
    case MtlReader::Kind::MapKd:
        setPlacement(line);
        return setMap(QStringLiteral("map_Kd"), line);
    case MtlReader::Kind::MapKs:
        return setMap(QStringLiteral("map_Ks"), line);
    case MtlReader::Kind::MapKa:
        return setMap(QStringLiteral("map_Ka"), line);
    case MtlReader::Kind::MapNs:
        return setMap(QStringLiteral("map_Ns"), line);
    default:
        return takeExtended(line);
    }
}

// Only a reader of the extended layout finds these keywords.
void MaterialCollector::takeExtended(const MtlReader& line) {
    switch (line.kind()) {
    case MtlReader::Kind::Ke:
        return setColour(_material, QStringLiteral("Ke"), line.values());
    case MtlReader::Kind::Tr:
        // Programs that write 1 for all materials mean opaque ones.
        if (!_hasOpacity && *line.values() < 1.0F)
            setScalar(_material, QStringLiteral("d"), 1.0F - *line.values());
        return;
    case MtlReader::Kind::Illum:
        return setModel(*line.values());
    case MtlReader::Kind::Pr:
        return setScalar(_material, QStringLiteral("Pr"), *line.values());
    case MtlReader::Kind::Pm:
        return setScalar(_material, QStringLiteral("Pm"), *line.values());
    case MtlReader::Kind::MapKe:
        return setMap(QStringLiteral("map_Ke"), line);
    case MtlReader::Kind::MapPr:
        return setMap(QStringLiteral("map_Pr"), line);
    case MtlReader::Kind::MapPm:
        return setMap(QStringLiteral("map_Pm"), line);
    case MtlReader::Kind::Norm:
    case MtlReader::Kind::MapKn:
        return setMap(QStringLiteral("norm"), line);
    default:
        return;
    }
}

void MaterialCollector::setModel(float number) {
    constexpr float kMaxModel = 255;
    const qint32 model = number >= 0 && number <= kMaxModel ? static_cast<qint32>(number) : 0;
    _material.set(QStringLiteral("illum"), &model, sizeof model);
}

// Where the map of the diffuse colour lies.
void MaterialCollector::setPlacement(const MtlReader& line) {
    if (_layout == MaterialLayout::Plain)
        return;
    const MapOptions options = parseMapOptions(line.rest());
    _material.set(QStringLiteral("map_offset"), options.offset, sizeof options.offset);
    _material.set(QStringLiteral("map_scale"), options.scale, sizeof options.scale);
}

} // namespace Atelier::Vel
