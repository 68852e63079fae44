#include "surfacepasses.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include <QtCore/QHash>
#include <QtGui/QImageReader>

#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/texturemanager.h>
#include <velgl/vertexarrayobject.h>
#include <velmodel/modelfiles.h>

#include "shaders.h"
#include "texturefiles.h"

namespace Atelier::Vel::Tool {

namespace {

// The GPU may round when it filters a texture and multiplies.
constexpr float kRounding = 0.001F;

/// The limits of the opacity of fragments.
struct Opacity {
    float minimum = 0;
    float maximum = 1;

    bool canBeOpaque() const { return maximum >= kMinOpaque - kRounding; }
    bool canBeTransparent() const {
        return minimum < kMinOpaque + kRounding && maximum >= kMinVisible - kRounding;
    }
};

// Whether an image of this format has no transparent pixel. The decoded image may have another format if the
// header is of palette colours.
bool isOpaque(QImage::Format format) {
    return format == QImage::Format_RGB32 || format == QImage::Format_RGB888 ||
           format == QImage::Format_Grayscale8;
}

/// Finds out which textures are opaque. Reads each file once.
class OpaqueMaps {
public:
    explicit OpaqueMaps(const ModelFiles& files) : _files(files) {}

    // Whether the texture of the material has no transparent texel. A missing one is drawn white.
    bool isOpaque(const InstanceData& material, const QString& map) {
        const QString path = material.texturePath(map);
        if (!path.isEmpty())
            return isOpaqueFile(path);
        Texture* const texture = material.texture(map);
        return texture == nullptr || texture == TextureManager::Instance().colorTexture(Qt::white);
    }

private:
    bool isOpaqueFile(const QString& path) {
        const auto known = _known.constFind(path);
        if (known != _known.constEnd())
            return *known;
        const std::unique_ptr<QFile> file = _files.open(textureFile(path));
        const bool isOpaque = file && Tool::isOpaque(QImageReader(file.get()).imageFormat());
        _known.insert(path, isOpaque);
        return isOpaque;
    }

    const ModelFiles& _files;
    QHash<QString, bool> _known;
};

Opacity opacityOf(const InstanceData& material, OpaqueMaps& maps) {
    const QByteArray value = material.value(QStringLiteral("d"));
    float opacity = 0;
    if (value.size() != sizeof opacity)
        return {};
    std::memcpy(&opacity, value.constData(), sizeof opacity);
    if (std::isnan(opacity))
        return {};
    opacity = std::clamp(opacity, 0.0F, 1.0F);
    return {maps.isOpaque(material, QStringLiteral("map_Kd")) ? opacity : 0.0F, opacity};
}

bool hasTransparentColours(const DrawBuffers& drawable) {
    const QVector<VertexArrayObject::Stream> streams =
        drawable.VAO() ? drawable.VAO()->streams() : QVector<VertexArrayObject::Stream>();
    return std::any_of(streams.begin(), streams.end(), [](const VertexArrayObject::Stream& stream) {
        return stream.name == QLatin1String("va_Color") && stream.components == 4;
    });
}

// Returns: the opacity of each command of each drawable.
std::vector<std::vector<Opacity>> opacitiesOf(const GPUModel& model, const ModelFiles& files) {
    OpaqueMaps maps(files);
    std::vector<std::vector<Opacity>> opacities(static_cast<std::size_t>(model.drawableCount()));
    for (int drawable = 0; drawable < model.drawableCount(); ++drawable) {
        const int commands = model.drawable(drawable)->drawElementsIndirectCommands().size();
        const InstanceDataCollection* const materials = model.materials(drawable);
        const QList<InstanceData> items = materials ? materials->items() : QList<InstanceData>();
        const bool isKnown = !hasTransparentColours(*model.drawable(drawable));
        for (int command = 0; command < commands; ++command)
            opacities[static_cast<std::size_t>(drawable)].push_back(
                isKnown && command < items.size() ? opacityOf(items[command], maps) : Opacity());
    }
    return opacities;
}

} // namespace

SurfacePasses surfacePasses(const GPUModel& model, const ModelFiles& files, const DrawFilter& shown) {
    const std::vector<std::vector<Opacity>> opacities = opacitiesOf(model, files);
    const auto opacity = [&](int drawable, int command) {
        return opacities[static_cast<std::size_t>(drawable)][static_cast<std::size_t>(command)];
    };
    const auto isOpaque = [&](int drawable, int command) {
        return shown.passes(drawable, command) && opacity(drawable, command).canBeOpaque();
    };
    const auto isTransparent = [&](int drawable, int command) {
        return shown.passes(drawable, command) && opacity(drawable, command).canBeTransparent();
    };
    return {DrawFilter(model, isOpaque), DrawFilter(model, isTransparent)};
}

} // namespace Atelier::Vel::Tool
