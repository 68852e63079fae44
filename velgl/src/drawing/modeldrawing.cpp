#include "state/scopedbinding.h"

#include "drawing/modeldrawing.h"

#include <algorithm>

#include <velgl/instancedataplan.h>
#include <velgl/shaderinterface.h>
#include <velgl/texturemanager.h>

#include "context/currentcontext.h"
#include "objects/textureaccess.h"
#include "state/programinputs.h"
#include "state/scopedstorage.h"

namespace Atelier::Vel {

namespace {

static_assert(InstanceDataPlan::kMaxTextures <= 32,
              "the uniform velgl_textures has one bit for each texture");

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

bool haveSameSources(const std::vector<ModelTexture>& a, const std::vector<ModelTexture>& b) {
    return std::equal(a.cbegin(), a.cend(), b.cbegin(), b.cend(), haveSameSource);
}

std::vector<TextureRun> runsOf(const ModelDrawable& drawable, const InstanceDataPlan* plan,
                               int commandCount) {
    const QStringList members = plan ? plan->textureNames() : QStringList();
    const QList<InstanceData> items =
        drawable.materials ? drawable.materials->items() : QList<InstanceData>();
    std::vector<TextureRun> runs;
    for (int command = 0; command < commandCount; ++command) {
        std::vector<ModelTexture> textures =
            texturesOf(command < items.size() ? items[command] : InstanceData(), members);
        if (runs.empty() || !haveSameSources(runs.back().textures, textures))
            runs.push_back({command, 0, std::move(textures)});
        ++runs.back().count;
    }
    return runs;
}

int commandCount(const std::vector<TextureRun>& runs) {
    return runs.empty() ? 0 : runs.back().first + runs.back().count;
}

void updateRuns(ModelDrawable& drawable) {
    const InstanceDataPlan* plan = drawable.materials ? drawable.materials->plan() : nullptr;
    const int count = drawable.buffers->drawElementsIndirectCommands().size();
    if (drawable.runsPlan == plan && commandCount(drawable.runs) == count)
        return;
    drawable.runs = runsOf(drawable, plan, count);
    drawable.runsPlan = plan;
}

// Binds a texture, and no sampler, to a unit; restores the unit on destruction.
class TextureOnUnit {
public:
    TextureOnUnit(GLuint unit, GLuint texture) : _unit(unit) {
        const ScopedTextureUnit active(unit);
        _sampler = currentName(GL_SAMPLER_BINDING);
        _previous = currentName(GL_TEXTURE_BINDING_2D);
        glBindTexture(GL_TEXTURE_2D, texture);
        glBindSampler(unit, 0);
    }
    ~TextureOnUnit() {
        const ScopedTextureUnit active(_unit);
        rebindTexture(GL_TEXTURE_2D, _previous);
        glBindSampler(_unit, glIsSampler(_sampler) ? _sampler : 0);
    }
    TextureOnUnit(const TextureOnUnit&) = delete;
    TextureOnUnit& operator=(const TextureOnUnit&) = delete;

private:
    GLuint _unit;
    GLuint _sampler = 0;
    GLuint _previous = 0;
};

void setTexturePresence(const std::vector<ModelTexture>& textures) {
    GLuint present = 0;
    for (std::size_t unit = 0; unit < textures.size(); ++unit)
        if (textures[unit].isPresent)
            present |= 1U << unit;
    for (const GLuint program : {currentVertexProgram(), currentFragmentProgram()}) {
        const GLint location = program ? glGetUniformLocation(program, "velgl_textures") : -1;
        if (location >= 0)
            glProgramUniform1i(program, location, static_cast<GLint>(present));
    }
}

// Binds a collection if it has a layout; otherwise the binding point is left to the client.
// Returns: false if there is a layout and the items cannot be stored. A shader would then read other data, so
// the draw must be skipped.
bool bindCollection(InstanceDataCollection* collection, GLuint point, int count) {
    const InstanceDataPlan* plan = collection ? collection->plan() : nullptr;
    return !plan || plan->stride() == 0 || count == 0 || collection->bindStorage(point, count);
}

// Returns: the name of the texture, or that of a white one if it is not two-dimensional or cannot be bound.
GLuint drawableName(const ContextGL& gl, ModelTexture& texture, ModelTextures& textures) {
    Texture* const white = TextureManager::Instance().colorTexture(Qt::white);
    Texture* const found = textures.find(texture, white);
    const GLuint name = found->target() == GL_TEXTURE_2D ? TextureAccess::nameIn(gl, *found) : 0;
    return name != 0 ? name : TextureAccess::nameIn(gl, *white);
}

void drawRun(const ContextGL& gl, DrawBuffers& buffers, TextureRun& run, ModelTextures& textures) {
    std::vector<std::unique_ptr<TextureOnUnit>> bound;
    for (std::size_t unit = 0; unit < run.textures.size(); ++unit) {
        const GLuint name = drawableName(gl, run.textures[unit], textures);
        bound.push_back(std::make_unique<TextureOnUnit>(static_cast<GLuint>(unit), name));
    }
    setTexturePresence(run.textures);
    buffers.draw(run.first, run.count);
}

} // namespace

void drawDrawable(ModelDrawable& drawable, ModelTextures& textures) {
    const ContextScope scope;
    if (!scope.gl())
        return;
    updateRuns(drawable);
    const int count = commandCount(drawable.runs);
    const ScopedStorageBinding materialsBinding(kMaterialsBinding);
    const ScopedStorageBinding instancesBinding(kInstancesBinding);
    if (!bindCollection(drawable.materials.get(), kMaterialsBinding, count) ||
        !bindCollection(drawable.instances.get(), kInstancesBinding, count))
        return;
    for (TextureRun& run : drawable.runs)
        drawRun(*scope.gl(), *drawable.buffers, run, textures);
}

} // namespace Atelier::Vel
