#pragma once

#include <memory>
#include <optional>

#include <QtCore/QBitArray>
#include <QtCore/QSet>

#include "modelload.h"
#include "surfacepasses.h"

namespace Atelier::Vel {
class GPUModel;
}

namespace Atelier::Vel::Viewer {

/// A model of a view: what was read, its objects of OpenGL, and which of its parts are visible.
class ShownModel {
public:
    explicit ShownModel(std::shared_ptr<ReadModel> read);
    ~ShownModel();
    ShownModel(const ShownModel&) = delete;
    ShownModel& operator=(const ShownModel&) = delete;

    const ReadModel& read() const { return *_read; }
    const ModelContents& contents() const { return _read->contents; }

    /// Gives OpenGL what it does not have yet: the model, and with each call a portion of the textures.
    /// Requires: a current context. Returns: whether more textures wait.
    bool prepare();
    /// The model of OpenGL. Requires: prepare() was called.
    GPUModel& gpu() { return *_gpu; }
    /// Milliseconds that the upload took.
    double uploadMilliseconds() const { return _uploadMilliseconds; }

    bool isVisible(int part) const { return _visible.testBit(part); }
    /// One bit for each part.
    void setVisible(const QBitArray& visible);
    const QBitArray& visible() const { return _visible; }
    /// The box of the visible parts; that of the model if there are none.
    ModelBox visibleBox() const;
    /// The box of the selected parts; not valid if there are none.
    ModelBox selectedBox() const;

    bool isSelected(int part) const { return _selected.testBit(part); }
    /// One bit for each part.
    void setSelected(const QBitArray& selected);
    const QBitArray& selected() const { return _selected; }
    bool hasSelection() const { return _selected.count(true) > 0; }

    /// A material with the values that it is drawn with.
    const ModelMaterial& material(int number) const { return _materials[number]; }
    /// Draws all parts of a material with other values.
    void setMaterial(int number, const MaterialValues& values);

    /// Takes over what a user has done with another state of the same file: its hidden and selected parts and
    /// its changed materials. They are found by their names; new ones stay as they are.
    void takeChangesOf(const ShownModel& other);

    /// The nearest visible surface that a ray hits.
    std::optional<PickHit> pick(const PickRay& ray) const;

    /// Without textures, surfaces have the colours of their materials.
    void setTextured(bool isTextured);

    /// The visible commands of each pass. Requires: prepare() was called, as for the filters.
    const Tool::SurfacePasses& passes();
    /// All visible commands.
    const DrawFilter& filter();
    /// All selected commands, visible or not.
    const DrawFilter& selection();

private:
    void uploadMaterial(int number);
    void makeFilters();

    std::shared_ptr<ReadModel> _read;
    std::unique_ptr<GPUModel> _gpu;
    double _uploadMilliseconds = 0;
    QVector<ModelMaterial> _materials;
    QSet<int> _changedMaterials;
    QBitArray _visible;
    QBitArray _selected;
    bool _isTextured = true;
    bool _hasFilters = false;
    Tool::SurfacePasses _allPasses; // of all commands
    Tool::SurfacePasses _passes;
    DrawFilter _filter;
    DrawFilter _selection;
};

} // namespace Atelier::Vel::Viewer
