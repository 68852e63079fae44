#include <velgl/gpumodel.h>

#include <algorithm>

#include <velgl/vertexarrayobject.h>

#include "context/currentcontext.h"
#include "drawing/modelbounds.h"
#include "drawing/modelcontent.h"
#include "drawing/modeldrawable.h"
#include "drawing/modeldrawing.h"

namespace Atelier::Vel {

namespace {

// Multiplies the instance count of every command.
void multiplyInstances(DrawBuffers& buffers, int times) {
    QVector<DrawElementsIndirectCommand> commands = buffers.drawElementsIndirectCommands();
    for (DrawElementsIndirectCommand& command : commands)
        command.instanceCount *= static_cast<std::uint32_t>(times);
    buffers.setDrawElementsIndirectCommands(commands.constData(), commands.size());
}

} // namespace

struct GPUModel::Data {
    ModelDrawables drawables;
    ModelBounds bounds;
    ModelTextures textures;
    ModelContent content;
    QString label;

    ModelDrawable* find(int index) const {
        const bool isKnown = index >= 0 && static_cast<std::size_t>(index) < drawables.size();
        return isKnown ? drawables[static_cast<std::size_t>(index)].get() : nullptr;
    }
};

GPUModel::GPUModel() : _data(std::make_unique<Data>()) {}

GPUModel::~GPUModel() = default;

int GPUModel::add(DrawBuffers* buffers, int instanceCount, InstanceDataCollection* materials,
                  InstanceDataCollection* instances, const quint64& key) {
    // Owned at once, so that nothing leaks if an allocation throws.
    std::unique_ptr<InstanceDataCollection> ownedMaterials(materials);
    std::unique_ptr<InstanceDataCollection> ownedInstances(instances);
    const auto isKnown = [&](const auto& known) { return known->buffers.get() == buffers; };
    if (!buffers || std::any_of(_data->drawables.cbegin(), _data->drawables.cend(), isKnown))
        return -1;
    buffers->setParent(nullptr); // the model is the only owner
    std::unique_ptr<DrawBuffers> ownedBuffers(buffers);
    if (buffers->VAO() && buffers->VAO()->label().isEmpty())
        buffers->VAO()->setLabel(QStringLiteral("drawable %1").arg(drawableCount()));
    auto drawable = std::make_unique<ModelDrawable>();
    drawable->materials = std::move(ownedMaterials);
    drawable->instances = std::move(ownedInstances);
    drawable->buffers = std::move(ownedBuffers);
    drawable->key = key;
    if (instanceCount != 1)
        multiplyInstances(*buffers, std::max(instanceCount, 0));
    _data->drawables.push_back(std::move(drawable));
    return drawableCount() - 1;
}

void GPUModel::addMaterialName(int drawable, int command, const QString& name) {
    if (ModelDrawable* known = _data->find(drawable))
        known->materialNames.set(command, name);
}

void GPUModel::addObjectName(int drawable, int command, const QString& name) {
    if (ModelDrawable* known = _data->find(drawable))
        known->objectNames.set(command, name);
}

int GPUModel::drawableCount() const {
    return static_cast<int>(_data->drawables.size());
}

DrawBuffers* GPUModel::drawable(int index) const {
    const ModelDrawable* known = _data->find(index);
    return known ? known->buffers.get() : nullptr;
}

InstanceDataCollection* GPUModel::materials(int drawable) const {
    const ModelDrawable* known = _data->find(drawable);
    return known ? known->materials.get() : nullptr;
}

InstanceDataCollection* GPUModel::instances(int drawable) const {
    const ModelDrawable* known = _data->find(drawable);
    return known ? known->instances.get() : nullptr;
}

quint64 GPUModel::key(int drawable) const {
    const ModelDrawable* known = _data->find(drawable);
    return known ? known->key : 0;
}

QString GPUModel::materialName(int drawable, int command) const {
    const ModelDrawable* known = _data->find(drawable);
    return known ? known->materialNames.of(command) : QString();
}

QString GPUModel::objectName(int drawable, int command) const {
    const ModelDrawable* known = _data->find(drawable);
    return known ? known->objectNames.of(command) : QString();
}

GPUModel::Bounds GPUModel::bounds(const QString& positionAttribute) {
    return _data->bounds.around(_data->drawables, positionAttribute);
}

void GPUModel::setLabel(const QString& label) {
    _data->label = label;
}

QString GPUModel::label() const {
    return _data->label;
}

void GPUModel::setRefill(Refill refill) {
    _data->content.setRefill(std::move(refill));
}

GPUModel::Refill GPUModel::refill() const {
    return _data->content.refill();
}

void GPUModel::setTextureLoader(TextureLoader loader) {
    _data->textures.setLoader(std::move(loader));
}

bool GPUModel::isUsable() const {
    const ContextScope scope;
    return scope.gl() && ModelContent::isComplete(*scope.gl(), _data->drawables);
}

void GPUModel::draw() {
    draw(DrawOptions());
}

void GPUModel::draw(const DrawOptions& options) {
    const ContextScope scope;
    if (scope.gl() && _data->content.isReady(*scope.gl(), *this, _data->drawables))
        drawModel(*scope.gl(), _data->drawables, _data->textures, options);
}

} // namespace Atelier::Vel
