#include "modelcontents.h"

#include <algorithm>
#include <cstring>

#include <QtCore/QHash>

#include <velmodel/textureloader.h>

namespace Atelier::Vel::Viewer {

namespace {

constexpr int kVerticesPerTriangle = 3;

float number(const InstanceData& material, const QString& member, float otherwise) {
    const QByteArray bytes = material.value(member);
    float value = otherwise;
    if (bytes.size() == int(sizeof value))
        std::memcpy(&value, bytes.constData(), sizeof value);
    return value;
}

// Colours in a file may lie outside of 0 to 1, and need not be numbers.
double channel(float value) {
    return value >= 0 ? std::min(double(value), 1.0) : 0;
}

QColor diffuseColour(const InstanceData& material) {
    const QByteArray bytes = material.value(QStringLiteral("Kd"));
    float values[3] = {};
    if (bytes.size() == int(sizeof values))
        std::memcpy(values, bytes.constData(), sizeof values);
    return QColor::fromRgbF(channel(values[0]), channel(values[1]), channel(values[2]));
}

// The paths that a texture loader tries.
QStringList triedPaths(const QString& path) {
    QStringList tried{path};
    QString withSlashes = path;
    withSlashes.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (withSlashes != path)
        tried.append(withSlashes);
    return tried;
}

/// Reads the header of each texture once.
class Textures {
public:
    Textures(const ModelFiles& files, const LoadReport& report) : _files(files) {
        for (const ReferencedFile& file : report.files)
            _tried.insert(file.path, file.tried);
    }

    MaterialTexture at(const QString& path, const QString& map) {
        if (!_sizes.contains(path))
            _sizes.insert(path, readTextureSize(_files, path));
        MaterialTexture texture{map, path, _sizes.value(path), {}};
        if (texture.isMissing())
            texture.tried = _tried.value(path);
        if (texture.isMissing() && texture.tried.isEmpty())
            texture.tried = triedPaths(path);
        return texture;
    }

private:
    const ModelFiles& _files;
    QHash<QString, QSize> _sizes;
    QHash<QString, QStringList> _tried;
};

ModelMaterial materialOf(const DrawData::Group& group, Textures& textures) {
    const InstanceData& values = group.material;
    ModelMaterial material;
    material.name = group.name;
    material.values.diffuse = diffuseColour(values);
    material.values.opacity = number(values, QStringLiteral("d"), 1);
    material.values.shininess = number(values, QStringLiteral("Ns"), 0);
    for (const QString& map : values.textureNames()) {
        const QString path = values.texturePath(map);
        if (!path.isEmpty())
            material.textures.append(textures.at(path, map));
    }
    return material;
}

} // namespace

bool ModelMaterial::hasMissingTexture() const {
    return std::any_of(textures.begin(), textures.end(),
                       [](const MaterialTexture& texture) { return texture.isMissing(); });
}

ModelContents contentsOf(const DrawData& data, const ModelFiles& files, const LoadReport& report) {
    ModelContents contents;
    Textures textures(files, report);
    QHash<QString, int> materials; // by name
    for (int drawable = 0; drawable < data.drawableCount(); ++drawable)
        for (int command = 0; command < data.commandCount(drawable); ++command) {
            const DrawData::Group group = data.group(drawable, command);
            if (!materials.contains(group.name)) {
                materials.insert(group.name, contents.materials.size());
                contents.materials.append(materialOf(group, textures));
            }
            const ModelBox box = data.commandBox(drawable, command);
            contents.parts.append({drawable, command, group.objectName, materials.value(group.name),
                                   data.command(drawable, command).count / kVerticesPerTriangle, box});
            contents.box = united(contents.box, box);
        }
    return contents;
}

int partOf(const ModelContents& contents, int drawable, int command) {
    const auto isBefore = [](const ModelPart& part, const QPair<int, int>& place) {
        return qMakePair(part.drawable, part.command) < place;
    };
    const auto found = std::lower_bound(contents.parts.begin(), contents.parts.end(),
                                        qMakePair(drawable, command), isBefore);
    const bool isThere =
        found != contents.parts.end() && found->drawable == drawable && found->command == command;
    return isThere ? int(found - contents.parts.begin()) : -1;
}

} // namespace Atelier::Vel::Viewer
