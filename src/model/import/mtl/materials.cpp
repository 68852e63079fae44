#include "import/mtl/materials.h"

#include <memory>

#include <QtCore/QTextStream>
#include <QtGui/QColor>

#include <velgl/instancedata.h>
#include <velgl/texturemanager.h>
#include <velmodel/objloader.h>

#include "files/textinput.h"
#include "import/mtl/materialcollector.h"
#include "import/mtl/mtlreader.h"
#include "import/references/filereferences.h"

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
    setColour(material, QStringLiteral("Ka"), kBlack);
    setColour(material, QStringLiteral("Kd"), kLightGrey);
    setColour(material, QStringLiteral("Ks"), kWhite);
    setScalar(material, QStringLiteral("Ns"), 10.0F);
    setInitialValues(material, layout);
    return material;
}

bool MaterialLibraries::load(const QString& name) {
    if (_readNames.contains(name))
        return true;
    const std::unique_ptr<TextInput> text = TextInput::open(_source, name);
    if (!text) {
        if (!_references.isAllowed(name))
            _references.warnOfOutside(name);
        return false;
    }
    const std::optional<FileVersion> version = text->version();
    if (version && _read.count(*version) != 0)
        return true;
    if (!read(*text, name))
        return false;
    if (version)
        _read.insert(*version);
    else
        _readNames.insert(name);
    return true;
}

// Returns: false if the end of the text was not reached.
bool MaterialLibraries::read(TextInput& text, const QString& name) {
    QTextStream stream(&text.device());
    const LoadRepairs& repairs = _options.repairs;
    LineSourceOptions lines = LineSourceOptions::joining(repairs.joinContinuedLines);
    lines.numbersLines = _diagnostics.isKept();
    MtlReader reader(&stream, true, lines,
                     {repairs.matchNames, repairs.parseMapOptions, _options.extendedMaterials});
    MaterialCollector collector(name, _definitions, _references, _options, _diagnostics);
    while (reader.hasNext()) {
        if (reader.read())
            collector.take(reader);
        reader.next();
    }
    collector.finishMaterial();
    return text.isReadToTheEnd();
}

} // namespace Atelier::Vel
