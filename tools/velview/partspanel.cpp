#include "partspanel.h"

#include <utility>

#include <QtCore/QHash>
#include <QtCore/QLocale>
#include <QtCore/QScopedValueRollback>
#include <QtGui/QPainter>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QTreeWidget>
#include <QtWidgets/QTreeWidgetItemIterator>
#include <QtWidgets/QVBoxLayout>

#include "materialpanel.h"
#include "shownmodel.h"
#include "textureswatches.h"

namespace Atelier::Vel::Viewer {

namespace {

enum Column { Name, Triangles };
enum Grouping { ByObject, ByMaterial };

constexpr int kPartRole = Qt::UserRole; // the number of the part of an item; none for a group
constexpr int kMaterialRole = kPartRole + 1;
const QColor kMissingColour(205, 45, 45);
constexpr int kSwatchSide = 14;
constexpr int kTextureLeft = kSwatchSide + 2;
constexpr QSize kSwatchSize(kTextureLeft + kSwatchSide, kSwatchSide);

// A colour, and to its right a texture if there is one.
QIcon swatch(const QColor& colour, const QImage& texture, qreal pixelRatio) {
    const QSizeF size(texture.isNull() ? kSwatchSide : kSwatchSize.width(), kSwatchSide);
    QPixmap picture((size * pixelRatio).toSize());
    picture.setDevicePixelRatio(pixelRatio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.setPen(QColor(0, 0, 0, 90));
    painter.setBrush(colour);
    painter.drawRoundedRect(QRectF(0.5, 0.5, kSwatchSide - 1, kSwatchSide - 1), 3, 3);
    painter.drawImage(QRectF(kTextureLeft, 0, kSwatchSide, kSwatchSide), texture);
    return picture;
}

// The texture that people take for that of the whole material.
QString shownTexture(const ModelMaterial& material) {
    for (const MaterialTexture& texture : material.textures)
        if (texture.map == QLatin1String("map_Kd") && !texture.isMissing())
            return texture.path;
    return {};
}

QStringList texturesOf(const ModelContents& contents) {
    // Decoding larger ones would take much memory once more.
    constexpr qint64 kMaxPixels = 1 << 26;
    QStringList paths;
    for (const ModelMaterial& material : contents.materials)
        for (const MaterialTexture& texture : material.textures)
            if (!texture.isMissing() && qint64{texture.size.width()} * texture.size.height() <= kMaxPixels)
                paths.append(texture.path);
    paths.removeDuplicates();
    return paths;
}

QString nameOfObject(const ModelPart& part) {
    return part.object.isEmpty() ? PartsPanel::tr("(no object)") : part.object;
}

void describeMaterial(QTreeWidgetItem& item, const ModelMaterial& material) {
    if (material.hasMissingTexture()) {
        item.setForeground(Name, kMissingColour);
        item.setToolTip(Name, PartsPanel::tr("A texture is missing"));
    }
}

int partOf(const QTreeWidgetItem& item) {
    const QVariant part = item.data(Name, kPartRole);
    return part.isValid() ? part.toInt() : -1;
}

template<typename Visit>
void forEachPart(QTreeWidget& tree, const Visit& visit) {
    for (QTreeWidgetItemIterator item(&tree); *item != nullptr; ++item)
        if (partOf(**item) >= 0)
            visit(**item, partOf(**item));
}

} // namespace

PartsPanel::PartsPanel(QWidget* parent)
    : QWidget(parent),
      _grouping(new QComboBox),
      _tree(new QTreeWidget),
      _material(new MaterialPanel),
      _swatches(new TextureSwatches(this)) {
    _grouping->addItems({tr("By object"), tr("By material")});
    _tree->setHeaderLabels({tr("Part"), tr("Triangles")});
    _tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    _tree->setUniformRowHeights(true);
    _tree->setIconSize(kSwatchSize);
    _tree->header()->setSectionResizeMode(Name, QHeaderView::Stretch);
    _tree->header()->setSectionResizeMode(Triangles, QHeaderView::ResizeToContents);
    _tree->header()->setStretchLastSection(false);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addWidget(_grouping);
    column->addWidget(_tree, 1);
    column->addWidget(_material);
    connect(_grouping, qOverload<int>(&QComboBox::currentIndexChanged), this, &PartsPanel::fill);
    connect(_tree, &QTreeWidget::itemSelectionChanged, this, &PartsPanel::takeSelection);
    connect(_tree, &QTreeWidget::itemChanged, this, &PartsPanel::takeVisible);
    connect(_material, &MaterialPanel::changed, this, &PartsPanel::takeMaterial);
    connect(_swatches, &TextureSwatches::made, this, [this] {
        showIcons();
        showMaterial();
    });
    connect(_tree, &QTreeWidget::itemDoubleClicked, this, &PartsPanel::frameWanted);
}

void PartsPanel::showModel(std::shared_ptr<ShownModel> model) {
    _model = std::move(model);
    _swatches->make(_model ? texturesOf(_model->contents()) : QStringList());
    fill();
}

void PartsPanel::fill() {
    const QScopedValueRollback<bool> reading(_isReading, true);
    _tree->clear();
    QHash<QString, QTreeWidgetItem*> groups; // by name
    for (int number = 0; _model && number < _model->contents().parts.size(); ++number) {
        const ModelPart& part = _model->contents().parts[number];
        QTreeWidgetItem*& group = groups[isByObject() ? nameOfObject(part) : materialOf(part).name];
        if (group == nullptr)
            group = addGroup(part);
        addPart(number, group);
    }
    showIcons();
    readModel();
}

bool PartsPanel::isByObject() const {
    return _grouping->currentIndex() == ByObject;
}

const ModelMaterial& PartsPanel::materialOf(const ModelPart& part) const {
    return _model->contents().materials[part.material];
}

// Adds the group that has this part and others.
QTreeWidgetItem* PartsPanel::addGroup(const ModelPart& part) {
    const ModelMaterial& material = materialOf(part);
    auto* const group = new QTreeWidgetItem(_tree, {isByObject() ? nameOfObject(part) : material.name});
    group->setFlags(group->flags() | Qt::ItemIsUserCheckable | Qt::ItemIsAutoTristate);
    group->setExpanded(true);
    if (!isByObject()) {
        group->setData(Name, kMaterialRole, part.material);
        describeMaterial(*group, material);
    }
    return group;
}

void PartsPanel::addPart(int number, QTreeWidgetItem* group) {
    const ModelPart& part = _model->contents().parts[number];
    const ModelMaterial& material = materialOf(part);
    auto* const item = new QTreeWidgetItem(
        group, {isByObject() ? material.name : nameOfObject(part), QLocale().toString(part.triangles)});
    item->setTextAlignment(Triangles, Qt::AlignRight | Qt::AlignVCenter);
    item->setData(Name, kPartRole, number);
    item->setData(Name, kMaterialRole, part.material);
    item->setCheckState(Name, Qt::Checked);
    describeMaterial(*item, material);
}

void PartsPanel::showIcons(int material) {
    const QScopedValueRollback<bool> reading(_isReading, true);
    QHash<int, QIcon> icons; // by the number of the material
    for (QTreeWidgetItemIterator item(_tree); *item != nullptr; ++item) {
        const QVariant number = (*item)->data(Name, kMaterialRole);
        if (!number.isValid() || (material >= 0 && number.toInt() != material))
            continue;
        QIcon& icon = icons[number.toInt()];
        if (icon.isNull()) {
            const ModelMaterial& shown = _model->material(number.toInt());
            icon = swatch(shown.values.diffuse, _swatches->at(shownTexture(shown)), devicePixelRatioF());
        }
        (*item)->setIcon(Name, icon);
    }
}

void PartsPanel::readModel() {
    const QScopedValueRollback<bool> reading(_isReading, true);
    QTreeWidgetItem* selected = nullptr;
    forEachPart(*_tree, [&](QTreeWidgetItem& item, int part) {
        item.setCheckState(Name, _model->isVisible(part) ? Qt::Checked : Qt::Unchecked);
        item.setSelected(_model->isSelected(part));
        if (selected == nullptr && _model->isSelected(part))
            selected = &item;
    });
    showMaterial(); // which leaves the list less room
    if (selected != nullptr) {
        layout()->activate();
        _tree->scrollToItem(selected);
    }
}

void PartsPanel::takeSelection() {
    if (_isReading || !_model)
        return;
    QBitArray parts(_model->contents().parts.size());
    forEachPart(*_tree, [&](QTreeWidgetItem& item, int part) {
        const bool isInGroup = item.parent() != nullptr && item.parent()->isSelected();
        parts.setBit(part, item.isSelected() || isInGroup);
    });
    _model->setSelected(parts);
    showMaterial();
    Q_EMIT changed();
}

void PartsPanel::takeVisible(QTreeWidgetItem* item, int column) {
    if (_isReading || column != Name || partOf(*item) < 0)
        return;
    QBitArray parts = _model->visible();
    parts.setBit(partOf(*item), item->checkState(Name) == Qt::Checked);
    _model->setVisible(parts);
    Q_EMIT changed();
}

// That of the first selected part; -1 without one.
int PartsPanel::selectedMaterial() const {
    for (int part = 0; _model && part < _model->contents().parts.size(); ++part)
        if (_model->isSelected(part))
            return _model->contents().parts[part].material;
    return -1;
}

void PartsPanel::showMaterial() {
    if (selectedMaterial() >= 0)
        _material->showMaterial(_model->material(selectedMaterial()), *_swatches);
    else
        _material->hide();
}

void PartsPanel::takeMaterial(const MaterialValues& values) {
    _model->setMaterial(selectedMaterial(), values);
    showIcons(selectedMaterial());
    Q_EMIT changed();
}

} // namespace Atelier::Vel::Viewer
