#pragma once

#include <memory>

#include <QtCore/QBitArray>
#include <QtWidgets/QWidget>

class QComboBox;
class QTreeWidget;
class QTreeWidgetItem;

namespace Atelier::Vel::Viewer {

class MaterialPanel;
class ShownModel;
class TextureSwatches;
struct MaterialValues;
struct ModelMaterial;
struct ModelPart;

/// Lists the parts of a model by object or by material, and hides and selects them.
class PartsPanel : public QWidget {
    Q_OBJECT
public:
    explicit PartsPanel(QWidget* parent = nullptr);

    /// Null for none.
    void showModel(std::shared_ptr<ShownModel> model);
    /// Selects the parts that are selected in the model, and checks those that are visible.
    void readModel();

    QTreeWidget& tree() const { return *_tree; }
    QComboBox& grouping() const { return *_grouping; }
    MaterialPanel& material() const { return *_material; }
    const TextureSwatches& swatches() const { return *_swatches; }

Q_SIGNALS:
    /// The user has changed the visible or selected parts of the model, or a material.
    void changed();
    /// The user wants to see the selected parts.
    void frameWanted();

private:
    void fill();
    // The icons of one material, or of all if it is -1.
    void showIcons(int material = -1);
    bool isByObject() const;
    const ModelMaterial& materialOf(const ModelPart& part) const;
    QTreeWidgetItem* addGroup(const ModelPart& part);
    void addPart(int number, QTreeWidgetItem* group);
    void takeSelection();
    void takeVisible(QTreeWidgetItem* item, int column);
    int selectedMaterial() const;
    void showMaterial();
    void takeMaterial(const MaterialValues& values);

    std::shared_ptr<ShownModel> _model;
    QComboBox* _grouping;
    QTreeWidget* _tree;
    MaterialPanel* _material;
    TextureSwatches* _swatches;
    bool _isReading = false; // while the tree follows the model
};

} // namespace Atelier::Vel::Viewer
