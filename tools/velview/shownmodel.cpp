#include "shownmodel.h"

#include <utility>

#include <QtCore/QElapsedTimer>
#include <QtCore/QHash>
#include <QtCore/QPair>

#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/texture.h>
#include <velmodel/objloader.h>

namespace Atelier::Vel::Viewer {

namespace {

GPUModel::TextureLoader whiteTextures() {
    const auto white = std::shared_ptr<Texture>(Texture::ofColor(Qt::white));
    return [white](const QString& /*path*/) { return std::shared_ptr<Texture>(white); };
}

InstanceData withValues(InstanceData material, const MaterialValues& values) {
    const float diffuse[] = {float(values.diffuse.redF()), float(values.diffuse.greenF()),
                             float(values.diffuse.blueF())};
    material.set(QStringLiteral("Kd"), diffuse, sizeof diffuse);
    material.set(QStringLiteral("d"), &values.opacity, sizeof values.opacity);
    material.set(QStringLiteral("Ns"), &values.shininess, sizeof values.shininess);
    return material;
}

// The object and the material of a part.
QPair<QString, QString> nameOf(const ModelContents& contents, int part) {
    return {contents.parts[part].object, contents.materials[contents.parts[part].material].name};
}

QHash<QPair<QString, QString>, int> partsByName(const ModelContents& contents) {
    QHash<QPair<QString, QString>, int> parts;
    for (int part = 0; part < contents.parts.size(); ++part)
        parts.insert(nameOf(contents, part), part);
    return parts;
}

ModelBox boxOf(const ModelContents& contents, const QBitArray& parts) {
    ModelBox box;
    for (int part = 0; part < contents.parts.size(); ++part)
        if (parts.testBit(part))
            box = united(box, contents.parts[part].box);
    return box;
}

} // namespace

ShownModel::ShownModel(std::shared_ptr<ReadModel> read)
    : _read(std::move(read)),
      _materials(_read->contents.materials),
      _visible(_read->contents.parts.size(), true),
      _selected(_read->contents.parts.size(), false) {}

ShownModel::~ShownModel() = default;

bool ShownModel::prepare() {
    if (!_gpu) {
        QElapsedTimer timer;
        timer.start();
        _gpu = std::make_unique<GPUModel>();
        _gpu->setLabel(_read->path);
        UploadOptions options{makeIdentityInstance()};
        options.keepData = true; // for views of other contexts
        upload(_read->data, *_gpu, options);
        setTextured(_isTextured);
        for (const int material : qAsConst(_changedMaterials))
            uploadMaterial(material);
        _allPasses = Tool::surfacePasses(*_gpu, _read->files);
        _uploadMilliseconds = double(timer.nsecsElapsed()) * 1e-6;
        return _read->textures.waitingCount() > 0; // the first frame comes before the textures
    }
    return _read->textures.waitingCount() > 0 && _read->textures.handOver() > 0;
}

void ShownModel::setVisible(const QBitArray& visible) {
    _visible = visible;
    _hasFilters = false;
}

void ShownModel::setSelected(const QBitArray& selected) {
    _selected = selected;
    _hasFilters = false;
}

ModelBox ShownModel::visibleBox() const {
    const ModelBox box = boxOf(contents(), _visible);
    return box.isValid ? box : contents().box;
}

ModelBox ShownModel::selectedBox() const {
    return boxOf(contents(), _selected);
}

void ShownModel::uploadMaterial(int number) {
    for (const ModelPart& part : contents().parts)
        if (part.material == number) {
            InstanceDataCollection* const items = _gpu->materials(part.drawable);
            items->set(part.command, withValues(items->items()[part.command], _materials[number].values));
        }
}

void ShownModel::setMaterial(int number, const MaterialValues& values) {
    const bool wasOpaque = _materials[number].values.opacity >= 1;
    _materials[number].values = values;
    _changedMaterials.insert(number);
    if (!_gpu)
        return;
    uploadMaterial(number);
    // The passes differ only where the material begins or ends to be opaque.
    if (wasOpaque != (values.opacity >= 1)) {
        _allPasses = Tool::surfacePasses(*_gpu, _read->files);
        _hasFilters = false;
    }
}

void ShownModel::takeChangesOf(const ShownModel& other) {
    const QHash<QPair<QString, QString>, int> parts = partsByName(other.contents());
    for (int part = 0; part < contents().parts.size(); ++part) {
        const int same = parts.value(nameOf(contents(), part), -1);
        if (same < 0)
            continue;
        _visible.setBit(part, other._visible.testBit(same));
        _selected.setBit(part, other._selected.testBit(same));
    }
    _hasFilters = false;
    for (const int changed : other._changedMaterials)
        for (int number = 0; number < _materials.size(); ++number)
            if (_materials[number].name == other._materials[changed].name)
                setMaterial(number, other._materials[changed].values);
}

std::optional<PickHit> ShownModel::pick(const PickRay& ray) const {
    return _read->picker.pick(
        ray, [this](int drawable, int command) { return isVisible(partOf(contents(), drawable, command)); });
}

void ShownModel::setTextured(bool isTextured) {
    _isTextured = isTextured;
    if (_gpu)
        _gpu->setTextureLoader(isTextured ? _read->textures.loader() : whiteTextures());
}

const Tool::SurfacePasses& ShownModel::passes() {
    makeFilters();
    return _passes;
}

const DrawFilter& ShownModel::filter() {
    makeFilters();
    return _filter;
}

const DrawFilter& ShownModel::selection() {
    makeFilters();
    return _selection;
}

void ShownModel::makeFilters() {
    if (std::exchange(_hasFilters, true))
        return;
    // The parts are in the order of the commands.
    const auto partsIn = [this](const QBitArray& parts, const DrawFilter& pass) {
        int part = 0;
        return DrawFilter(*_gpu, [&](int drawable, int command) {
            return parts.testBit(part++) && pass.passes(drawable, command);
        });
    };
    _filter = partsIn(_visible, DrawFilter());
    _selection = partsIn(_selected, DrawFilter());
    _passes = {partsIn(_visible, _allPasses.opaque), partsIn(_visible, _allPasses.transparent)};
}

} // namespace Atelier::Vel::Viewer
