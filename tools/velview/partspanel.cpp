#include "partspanel.h"

#include <utility>

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

namespace Atelier::Vel::Viewer {

namespace {

enum Column { Name, Triangles };
enum Grouping { ByObject, ByMaterial };

constexpr int kPartRole = Qt::UserRole; // the number of the part of an item; none for a group
const QColor kMissingColour(205, 45, 45);

QIcon swatch(const QColor& colour) {
    constexpr int kSide = 14;
    QPixmap picture(kSide, kSide);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor(0, 0, 0, 90));
    painter.setBrush(colour);
    painter.drawRoundedRect(QRectF(0.5, 0.5, kSide - 1, kSide - 1), 3, 3);
    return picture;
}

QString nameOfObject(const ModelPart& part) {
    return part.object.isEmpty() ? PartsPanel::tr("(no object)") : part.object;
}

void describeMaterial(QTreeWidgetItem& item, const ModelMaterial& material) {
    item.setIcon(Name, swatch(material.values.diffuse));
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
    : QWidget(parent), _grouping(new QComboBox), _tree(new QTreeWidget), _material(new MaterialPanel) {
    _grouping->addItems({tr("By object"), tr("By material")});
    _tree->setHeaderLabels({tr("Part"), tr("Triangles")});
    _tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    _tree->setUniformRowHeights(true);
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
    connect(_tree, &QTreeWidget::itemDoubleClicked, this, &PartsPanel::frameWanted);
}

void PartsPanel::showModel(std::shared_ptr<ShownModel> model) {
    _model = std::move(model);
    fill();
}

void PartsPanel::fill() {
    const QScopedValueRollback<bool> reading(_isReading, true);
    _tree->clear();
    if (_model) {
        const ModelContents& contents = _model->contents();
        QHash<QString, QTreeWidgetItem*> groups;
        for (int number = 0; number < contents.parts.size(); ++number) {
            const ModelPart& part = contents.parts[number];
            const ModelMaterial& material = contents.materials[part.material];
            const bool isByObject = _grouping->currentIndex() == ByObject;
            const QString groupName = isByObject ? nameOfObject(part) : material.name;
            QTreeWidgetItem*& group = groups[groupName];
            if (group == nullptr) {
                group = new QTreeWidgetItem(_tree, {groupName});
                group->setFlags(group->flags() | Qt::ItemIsUserCheckable | Qt::ItemIsAutoTristate);
                group->setExpanded(true);
                if (!isByObject)
                    describeMaterial(*group, material);
            }
            auto* const item = new QTreeWidgetItem(
                group, {isByObject ? material.name : nameOfObject(part), QLocale().toString(part.triangles)});
            item->setTextAlignment(Triangles, Qt::AlignRight | Qt::AlignVCenter);
            item->setData(Name, kPartRole, number);
            item->setCheckState(Name, Qt::Checked);
            describeMaterial(*item, material);
        }
    }
    readModel();
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
        _material->showMaterial(_model->material(selectedMaterial()));
    else
        _material->hide();
}

void PartsPanel::takeMaterial(const MaterialValues& values) {
    _model->setMaterial(selectedMaterial(), values);
    const QScopedValueRollback<bool> reading(_isReading, true);
    forEachPart(*_tree, [&](QTreeWidgetItem& item, int part) {
        if (_model->contents().parts[part].material == selectedMaterial())
            item.setIcon(Name, swatch(values.diffuse));
    });
    Q_EMIT changed();
}

} // namespace Atelier::Vel::Viewer
