#include "import/mtl/materials.h"

#include <memory>
#include <utility>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtGui/QColor>

#include <velgl/instancedata.h>
#include <velgl/texturemanager.h>
#include <velmodel/modelfiles.h>
#include <velmodel/objloader.h>

#include "diagnostics.h"
#include "files/textfile.h"
#include "import/mtl/materialdefinitions.h"
#include "import/mtl/mtlreader.h"

namespace Atelier::Vel {

namespace {

QString materialPlanName() {
    return QStringLiteral("OBJMaterial");
}

void setScalar(InstanceData& material, const QString& name, float value) {
    material.set(name, &value, sizeof value);
}

void setColour(InstanceData& material, const QString& name, const float* rgb) {
    material.set(name, rgb, 3 * sizeof *rgb);
}

/// Collects the lines of one material at a time and defines each material.
class MaterialCollector {
public:
    MaterialCollector(QString path, MaterialDefinitions& definitions, const ModelFiles& files,
                      const LoadRepairs& repairs, DiagnosticLog& diagnostics)
        : _path(std::move(path)),
          _definitions(definitions),
          _files(files),
          _repairs(repairs),
          _diagnostics(diagnostics),
          _blank(materialPlanName()),
          _material(materialPlanName()) {
        setScalar(_blank, QStringLiteral("d"), 1.0F);
    }

    void take(const MtlReader& line);
    /// Defines the current material.
    void finishMaterial();

private:
    void startMaterial(const MtlReader& line);
    void setMap(const QString& name, const MtlReader& line);

    QString _path;
    MaterialDefinitions& _definitions;
    const ModelFiles& _files;
    const LoadRepairs& _repairs;
    DiagnosticLog& _diagnostics;
    InstanceData _blank; ///< the initial state of every material, shared by unchanged ones
    bool _isBlank = false;
    bool _hasMaterial = false;
    MaterialName _name;
    InstanceData _material;
    WhiteMaps _whiteMaps;
};

void MaterialCollector::finishMaterial() {
    if (_hasMaterial)
        _definitions.define(_name, _path, _isBlank ? _blank : _material, _whiteMaps);
}

void MaterialCollector::startMaterial(const MtlReader& line) {
    finishMaterial();
    // Not a copy of the blank one, because QMap leaks memory if an allocation fails when it detaches a copy.
    _material.clear();
    setScalar(_material, QStringLiteral("d"), 1.0F);
    _whiteMaps = WhiteMaps();
    _isBlank = true;
    _name = {line.text(), _repairs.matchNames ? line.rest() : QString()};
    _hasMaterial = true;
}

// An unreadable texture is drawn as white.
void MaterialCollector::setMap(const QString& name, const MtlReader& line) {
    const QString& path = line.text();
    if (line.isRepaired())
        _diagnostics.add(DiagnosticLog::Code::MapName, _path, line.rest(),
                         [&] { return QStringLiteral("'%1' names the file '%2'").arg(line.rest(), path); });
    const bool isAllowed = _files.allows(path);
    if (!isAllowed)
        reportOutsideFile(path, _files.folder());
    _material.setTexture(name, isAllowed ? path : QString());
    _whiteMaps.set(name, !isAllowed);
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
        return setScalar(_material, QStringLiteral("d"), *line.values());
    case MtlReader::Kind::MapKd:
        return setMap(QStringLiteral("map_Kd"), line);
    case MtlReader::Kind::MapKs:
        return setMap(QStringLiteral("map_Ks"), line);
    case MtlReader::Kind::MapKa:
        return setMap(QStringLiteral("map_Ka"), line);
    case MtlReader::Kind::MapNs:
        return setMap(QStringLiteral("map_Ns"), line);
    case MtlReader::Kind::NewMtl:
    case MtlReader::Kind::End:
    case MtlReader::Kind::Unknown:
        return;
    }
}

} // namespace

InstanceData makeDefaultMaterial() {
    InstanceData material = makeDefaultMaterialWithoutMaps();
    Texture* const white = TextureManager::Instance().colorTexture(Qt::white);
    defaultWhiteMaps().forEach([&](const QString& map) { material.setTexture(map, white); });
    return material;
}

WhiteMaps defaultWhiteMaps() {
    WhiteMaps maps;
    maps.set(QStringLiteral("map_Kd"), true);
    maps.set(QStringLiteral("map_Ks"), true);
    return maps;
}

InstanceData makeDefaultMaterialWithoutMaps() {
    constexpr float kBlack[] = {0.0F, 0.0F, 0.0F};
    constexpr float kLightGrey[] = {0.7F, 0.7F, 0.7F};
    constexpr float kWhite[] = {1.0F, 1.0F, 1.0F};
    InstanceData material(materialPlanName());
    setColour(material, QStringLiteral("Ka"), kBlack);
    setColour(material, QStringLiteral("Kd"), kLightGrey);
    setColour(material, QStringLiteral("Ks"), kWhite);
    setScalar(material, QStringLiteral("Ns"), 10.0F);
    setScalar(material, QStringLiteral("d"), 1.0F);
    return material;
}

bool MaterialLibraries::load(const QString& path) {
    const std::unique_ptr<QFile> file = _files.open(path, QIODevice::ReadOnly | QIODevice::Text);
    if (!file) {
        if (!_files.allows(path))
            reportOutsideFile(path, _files.folder());
        return false;
    }
    const std::optional<FileVersion> version = versionOf(*file);
    if (version && _read.count(*version) != 0)
        return true;
    QTextStream stream(file.get());
    LineSourceOptions lines;
    lines.joinsContinuedLines = _repairs.joinContinuedLines;
    MtlReader reader(&stream, true, lines, {_repairs.matchNames, _repairs.parseMapOptions});
    reader.setDirectory(QFileInfo(path).dir().absolutePath());
    MaterialCollector collector(path, _definitions, _files, _repairs, _diagnostics);
    while (reader.hasNext()) {
        if (reader.read())
            collector.take(reader);
        reader.next();
    }
    collector.finishMaterial();
    if (!isReadToTheEnd(*file))
        return false;
    if (version)
        _read.insert(*version);
    return true;
}

} // namespace Atelier::Vel
