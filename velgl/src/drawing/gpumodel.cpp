#include <velgl/gpumodel.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include <velgl/vertexarrayobject.h>

#include "context/currentcontext.h"
#include "context/log.h"
#include "drawing/boxes.h"
#include "drawing/drawbuffersaccess.h"
#include "drawing/modelbounds.h"
#include "drawing/modelcontent.h"
#include "drawing/modeldrawable.h"
#include "drawing/modeldrawing.h"

namespace Atelier::Vel {

struct GPUModel::Data {
    ModelDrawables drawables; // null for the number of a drawable that was removed
    ModelTextures textures;
    ModelContent content;
    QString label;
    bool isNumberReported = false;
    bool isNestingReported = false;

    // While it is drawn, functions of the client may remove drawables: they are freed afterwards.
    int useCount = 0;
    ModelDrawables removed;
    QVector<ModelTextures::Loaded> removedTextures;

    ModelDrawable* find(int index) const {
        const bool isKnown = index >= 0 && static_cast<std::size_t>(index) < drawables.size();
        return isKnown ? drawables[static_cast<std::size_t>(index)].get() : nullptr;
    }
    ModelDrawable* findOrReport(int index);
};

ModelDrawable* GPUModel::Data::findOrReport(int index) {
    ModelDrawable* const known = find(index);
    if (!known && !std::exchange(isNumberReported, true))
        qCWarning(velglLog, "Model '%s' has no drawable %d", qPrintable(label), index);
    return known;
}

// Keeps what is removed until its end.
class GPUModel::Use {
public:
    explicit Use(Data& data) : _data(data) { ++_data.useCount; }
    ~Use() {
        if (--_data.useCount > 0)
            return;
        _data.removed.clear();
        _data.removedTextures.clear();
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

private:
    Data& _data;
};

GPUModel::GPUModel() : _data(std::make_unique<Data>()) {}

GPUModel::~GPUModel() = default;

int GPUModel::add(DrawBuffers* buffers, int instanceCount, InstanceDataCollection* materials,
                  InstanceDataCollection* instances, const quint64& key) {
    // Owned at once, so that nothing leaks if an allocation throws.
    std::unique_ptr<InstanceDataCollection> ownedMaterials(materials);
    std::unique_ptr<InstanceDataCollection> ownedInstances(instances);
    const auto isKnown = [&](const auto& known) { return known && known->buffers.get() == buffers; };
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
        DrawBuffersAccess::multiplyInstances(*buffers, std::max(instanceCount, 0));
    _data->drawables.push_back(std::move(drawable));
    return drawableCount() - 1;
}

bool GPUModel::remove(int drawable) {
    if (!_data->findOrReport(drawable))
        return false;
    _data->removed.reserve(_data->removed.size() + 1);
    std::unique_ptr<ModelDrawable> removed = std::move(_data->drawables[static_cast<std::size_t>(drawable)]);
    if (_data->useCount > 0)
        _data->removed.push_back(std::move(removed));
    return true;
}

void GPUModel::clear() {
    const Use use(*_data);
    _data->removed.reserve(_data->removed.size() + _data->drawables.size());
    _data->removedTextures.append(_data->textures.takeLoaded());
    _data->content.setRefill({});
    std::move(_data->drawables.begin(), _data->drawables.end(), std::back_inserter(_data->removed));
    _data->drawables.clear();
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
    const Use use(*_data);
    return boundsOf(_data->drawables, positionAttribute);
}

void GPUModel::setCommandBounds(int drawable, const QVector<Bounds>& bounds) {
    if (ModelDrawable* known = _data->findOrReport(drawable))
        known->givenBoxes.set(bounds);
}

GPUModel::Bounds GPUModel::commandBounds(int drawable, int command) const {
    const ModelDrawable* known = _data->find(drawable);
    return known ? known->givenBoxes.of(command) : Bounds();
}

GPUModel::Bounds GPUModel::placedBounds(const QString& matrixMember) {
    Bounds bounds;
    for (const std::unique_ptr<ModelDrawable>& drawable : _data->drawables)
        if (drawable)
            include(bounds,
                    drawable->givenBoxes.placed(*drawable->buffers, drawable->instances.get(), matrixMember));
    return bounds;
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
    if (_data->useCount > 0) {
        if (!std::exchange(_data->isNestingReported, true))
            qCWarning(velglLog, "Model '%s' is not drawn by a function that one of its draws calls",
                      qPrintable(_data->label));
        return;
    }
    const Use use(*_data);
    const ContextScope scope;
    if (scope.gl() && _data->content.isReady(*scope.gl(), *this, _data->drawables))
        drawModel(*scope.gl(), _data->drawables, _data->textures, options);
}

} // namespace Atelier::Vel
