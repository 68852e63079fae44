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
#include "import/mtl/materialcollector.h"
#include "import/mtl/mtlreader.h"

namespace Atelier::Vel {

InstanceData makeDefaultMaterial() {
    InstanceData material = makeDefaultMaterialWithoutMaps(MaterialLayout::Plain);
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

InstanceData makeDefaultMaterialWithoutMaps(MaterialLayout layout) {
    constexpr float kBlack[] = {0.0F, 0.0F, 0.0F};
    constexpr float kLightGrey[] = {0.7F, 0.7F, 0.7F};
    constexpr float kWhite[] = {1.0F, 1.0F, 1.0F};
    InstanceData material(materialPlanName(layout));
    setInitialValues(material, layout);
    setColour(material, QStringLiteral("Ka"), kBlack);
    setColour(material, QStringLiteral("Kd"), kLightGrey);
    setColour(material, QStringLiteral("Ks"), kWhite);
    setScalar(material, QStringLiteral("Ns"), 10.0F);
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
    const LoadRepairs& repairs = _options.repairs;
    LineSourceOptions lines;
    lines.joinsContinuedLines = repairs.joinContinuedLines;
    MtlReader reader(&stream, true, lines,
                     {repairs.matchNames, repairs.parseMapOptions, _options.extendedMaterials});
    reader.setDirectory(QFileInfo(path).dir().absolutePath());
    MaterialCollector collector(path, _definitions, _files, _options, _diagnostics);
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
