#include "import/mtl/materials.h"

#include <memory>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtGui/QColor>

#include <velgl/instancedata.h>
#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>
#include <velgl/texturemanager.h>
#include <velmodel/modelfiles.h>
#include <velmodel/objloader.h>

#include "diagnostics.h"
#include "files/textfile.h"
#include "import/mtl/mtlreader.h"
#include "mesh/groupstore.h"

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

/// Collects the lines of one material at a time and makes a group of each material.
class MaterialCollector {
public:
    MaterialCollector(GroupStore& groups, const ModelFiles& files)
        : _groups(groups), _files(files), _blank(materialPlanName()), _material(materialPlanName()) {
        setScalar(_blank, QStringLiteral("d"), 1.0F);
    }

    void take(const MtlReader& line);
    /// Makes the group of the current material, unless a group of its name exists.
    void finishMaterial();

private:
    void startMaterial(const QString& name);
    void setMap(const QString& name, const QString& path);

    GroupStore& _groups;
    const ModelFiles& _files;
    InstanceData _blank; ///< the initial state of every material, shared by unchanged ones
    bool _isBlank = false;
    QString _name; ///< null before the first material
    InstanceData _material;
    WhiteMaps _whiteMaps;
};

void MaterialCollector::finishMaterial() {
    if (_name.isNull() || _groups.contains(_name))
        return;
    _groups.create(_name, _isBlank ? _blank : _material, -1, 0, _whiteMaps);
}

void MaterialCollector::startMaterial(const QString& name) {
    finishMaterial();
    // Not a copy of the blank one, because QMap leaks memory if an allocation fails when it detaches a copy.
    _material.clear();
    setScalar(_material, QStringLiteral("d"), 1.0F);
    _whiteMaps = WhiteMaps();
    _isBlank = true;
    _name = name;
}

// An unreadable texture is drawn as white.
void MaterialCollector::setMap(const QString& name, const QString& path) {
    const bool isAllowed = _files.allows(path);
    if (!isAllowed)
        reportOutsideFile(path, _files.folder());
    _material.setTexture(name, isAllowed ? path : QString());
    _whiteMaps.set(name, !isAllowed);
}

void MaterialCollector::take(const MtlReader& line) {
    if (line.kind() == MtlReader::Kind::NewMtl)
        return startMaterial(line.text());
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
        return setMap(QStringLiteral("map_Kd"), line.text());
    case MtlReader::Kind::MapKs:
        return setMap(QStringLiteral("map_Ks"), line.text());
    case MtlReader::Kind::MapKa:
        return setMap(QStringLiteral("map_Ka"), line.text());
    case MtlReader::Kind::MapNs:
        return setMap(QStringLiteral("map_Ns"), line.text());
    case MtlReader::Kind::NewMtl:
    case MtlReader::Kind::End:
    case MtlReader::Kind::Unknown:
        return;
    }
}

} // namespace

void registerObjMaterialPlan() {
    using DataType = InstanceDataPlan::DataType;
    // The plan contains "Ke" and "map_Ke", which no MTL keyword sets, and lacks "Ka" and "map_Ka". This is
    // intentional.
    auto* plan = new InstanceDataPlan(materialPlanName());
    plan->addMember(DataType::Float, QStringLiteral("Ns"));
    plan->addMember(DataType::Float, QStringLiteral("d"));
    plan->addMember(DataType::Vec3, QStringLiteral("Kd"));
    plan->addMember(DataType::Vec3, QStringLiteral("Ks"));
    plan->addMember(DataType::Vec3, QStringLiteral("Ke"));
    plan->addMember(DataType::Texture, QStringLiteral("map_Ns"));
    plan->addMember(DataType::Texture, QStringLiteral("map_Kd"));
    plan->addMember(DataType::Texture, QStringLiteral("map_Ks"));
    plan->addMember(DataType::Texture, QStringLiteral("map_Ke"));
    InstanceDataRegistry::Instance().registerPlan(plan);
}

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
    MtlReader reader(&stream, true);
    reader.setDirectory(QFileInfo(path).dir().absolutePath());
    MaterialCollector collector(_groups, _files);
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
