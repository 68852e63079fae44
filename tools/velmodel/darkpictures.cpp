#include "darkpictures.h"

#include <algorithm>

#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>

#include "renderoptions.h"

namespace Atelier::Vel::Tool {

namespace {

constexpr int kTrialSide = 160;

bool isBlack(const InstanceData& material, const QString& name) {
    const QByteArray bytes = material.value(name);
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return byte == 0; });
}

bool isTextured(const InstanceData& material, const QString& name) {
    return !material.texturePath(name).isEmpty();
}

bool isBlack(const InstanceData& material) {
    return isBlack(material, QStringLiteral("Kd")) && isBlack(material, QStringLiteral("Ke")) &&
           !isTextured(material, QStringLiteral("map_Kd")) && !isTextured(material, QStringLiteral("map_Ke"));
}

bool hasOnlyBlackMaterials(const GPUModel& model) {
    for (int drawable = 0; drawable < model.drawableCount(); ++drawable) {
        const InstanceDataCollection* const materials = model.materials(drawable);
        const QList<InstanceData> items = materials != nullptr ? materials->items() : QList<InstanceData>();
        if (!std::all_of(items.begin(), items.end(), [](const InstanceData& item) { return isBlack(item); }))
            return false;
    }
    return true;
}

struct Trial {
    QString option;
    Scene scene;
};

QVector<Trial> trialsOf(const Scene& scene) {
    QVector<Trial> trials;
    const auto add = [&](const QString& option) {
        trials.append({option, scene});
        return &trials.last().scene;
    };
    if (scene.colours == MaterialColours::SRgb)
        add(QStringLiteral("--mtl-colours linear"))->colours = MaterialColours::Linear;
    for (const double stops : {2.0, 4.0})
        if (scene.exposure + stops <= kMaxExposure)
            add(QStringLiteral("--exposure %1").arg(scene.exposure + stops))->exposure += stops;
    if (scene.colours != MaterialColours::None)
        add(QStringLiteral("--mtl-colours none"))->colours = MaterialColours::None;
    return trials;
}

bool helps(Renderer& renderer, GPUModel& model, Trial trial) {
    trial.scene.size.scale(kTrialSide, kTrialSide, Qt::KeepAspectRatio);
    trial.scene.size = trial.scene.size.expandedTo({1, 1});
    QString error;
    if (renderer.render(model, trial.scene, error).isNull())
        return false;
    return renderer.brightness().shown > 0 && !renderer.brightness().isDark();
}

} // namespace

QString darknessAdvice(Renderer& renderer, GPUModel& model, const Scene& scene,
                       const Brightness& brightness) {
    const bool hasColours = scene.colours != MaterialColours::None && brightness.shown > 0;
    if (hasColours && hasOnlyBlackMaterials(model))
        return QStringLiteral("All materials are black; --mtl-colours none shows the shape");
    if (!brightness.isDark())
        return {};
    for (const Trial& trial : trialsOf(scene))
        if (helps(renderer, model, trial))
            return QStringLiteral("Most of the picture is nearly black; %1 shows more").arg(trial.option);
    return {};
}

} // namespace Atelier::Vel::Tool
