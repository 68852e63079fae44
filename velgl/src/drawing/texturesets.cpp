#include "drawing/texturesets.h"

#include <algorithm>

#include <QtCore/QHash>

#include <velgl/instancedatacollection.h>
#include <velgl/instancedataplan.h>
#include <velgl/texturemanager.h>

#include "instances/collectionaccess.h"
#include "objects/textureaccess.h"
#include "objects/texturemanageraccess.h"
#include "state/scopedbinding.h"

namespace Atelier::Vel {

namespace {

static_assert(InstanceDataPlan::kMaxTextures <= 32,
              "the uniform `velgl_textures` has one bit for each texture");

ModelTexture textureOf(const InstanceData& material, const QString& member) {
    ModelTexture texture;
    texture.isPresent = material.hasTexture(member);
    texture.path = material.texturePath(member);
    texture.object = material.texture(member);
    return texture;
}

std::vector<ModelTexture> texturesOf(const InstanceData& material, const QStringList& members) {
    std::vector<ModelTexture> textures;
    for (const QString& member : members)
        textures.push_back(textureOf(material, member));
    return textures;
}

int presenceOf(const std::vector<ModelTexture>& textures) {
    unsigned int present = 0;
    for (std::size_t unit = 0; unit < textures.size(); ++unit)
        if (textures[unit].isPresent)
            present |= 1U << unit;
    return static_cast<int>(present);
}

// Sets with equal keys have the same textures.
QString keyOf(const std::vector<ModelTexture>& textures) {
    QString key;
    for (const ModelTexture& texture : textures)
        key += QStringLiteral("%1 %2 %3\n")
                   .arg(texture.isPresent)
                   .arg(quintptr(texture.object.data()))
                   .arg(texture.path);
    return key;
}

GLuint nameOf(const ContextGL& gl, ModelTexture& texture, ModelTextures& textures) {
    Texture* const white = TextureManager::Instance().colorTexture(Qt::white);
    Texture* const found = textures.find(texture, white);
    const GLuint name = found->target() == GL_TEXTURE_2D ? TextureAccess::nameIn(gl, *found) : 0;
    return name != 0 ? name : TextureAccess::nameIn(gl, *white);
}

} // namespace

void TextureSets::update(const InstanceDataCollection* materials, int commandCount) {
    const InstanceDataPlan* plan = materials ? materials->plan() : nullptr;
    const quint64 itemRevision = materials ? CollectionAccess::textureRevision(*materials) : 0;
    if (_isKnown && plan == _plan && commandCount == _commandCount && itemRevision == _itemRevision)
        return;
    _isKnown = false;
    ++_revision;
    _key = {};
    _sets.clear();
    _runs.clear();
    const QStringList members = plan ? plan->textureNames() : QStringList();
    const QList<InstanceData> items = materials ? materials->items() : QList<InstanceData>();
    QHash<QString, int> setNumbers;
    for (int command = 0; command < commandCount; ++command) {
        std::vector<ModelTexture> textures =
            texturesOf(command < items.size() ? items[command] : InstanceData(), members);
        const QString key = keyOf(textures);
        const int set = setNumbers.value(key, setCount());
        if (set == setCount()) {
            setNumbers.insert(key, set);
            const int presence = presenceOf(textures);
            _sets.push_back({std::move(textures), presence});
        }
        if (_runs.empty() || _runs.back().set != set)
            _runs.push_back({command, 0, set});
        ++_runs.back().count;
    }
    _plan = plan;
    _commandCount = commandCount;
    _itemRevision = itemRevision;
    _unitCount = members.size();
    _isKnown = true;
}

void TextureSets::updateNames(const ContextGL& gl, ModelTextures& textures) {
    // Taken first: what is made or replaced meanwhile is found with the next draw.
    const Key key{gl.group()->serial(), TextureAccess::revision(), textures.revision(),
                  TextureManagerAccess::loaderRevision(TextureManager::Instance())};
    if (_key == key)
        return;
    _names.resize(_sets.size() * static_cast<std::size_t>(_unitCount));
    auto name = _names.begin();
    for (Set& set : _sets)
        for (ModelTexture& texture : set.textures)
            *name++ = nameOf(gl, texture, textures);
    _key = key;
}

} // namespace Atelier::Vel
