#include "materialpanel.h"

#include <cmath>

#include <QtCore/QFileInfo>
#include <QtCore/QLocale>
#include <QtCore/QScopedValueRollback>
#include <QtWidgets/QColorDialog>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSlider>
#include <QtWidgets/QVBoxLayout>

#include "textureswatches.h"

namespace Atelier::Vel::Viewer {

namespace {

constexpr int kSwatchSide = 32;
constexpr int kOpacitySteps = 100;
constexpr int kShininessSteps = 100;
constexpr double kMaxShininess = 1000;

// Each step multiplies: the difference between 10 and 20 is as visible as that between 100 and 200.
float shininessOf(int steps) {
    return float(std::pow(kMaxShininess + 1, double(steps) / kShininessSteps) - 1);
}

int stepsOf(float shininess) {
    const double limited = qBound(0.0, double(shininess), kMaxShininess);
    return qRound(std::log(limited + 1) / std::log(kMaxShininess + 1) * kShininessSteps);
}

} // namespace

MaterialPanel::MaterialPanel(QWidget* parent)
    : QWidget(parent),
      _name(new QLabel),
      _colour(new QPushButton),
      _opacity(new QSlider(Qt::Horizontal)),
      _shininess(new QSlider(Qt::Horizontal)),
      _column(new QVBoxLayout(this)) {
    _name->setTextInteractionFlags(Qt::TextSelectableByMouse);
    _opacity->setRange(0, kOpacitySteps);
    _shininess->setRange(0, kShininessSteps);
    auto* const form = new QFormLayout;
    form->addRow(_name);
    form->addRow(tr("Colour"), _colour);
    form->addRow(tr("Opacity"), _opacity);
    form->addRow(tr("Shininess"), _shininess);
    _column->setContentsMargins({});
    _column->addLayout(form);
    connect(_colour, &QPushButton::clicked, this, &MaterialPanel::chooseColour);
    connect(_opacity, &QSlider::valueChanged, this, &MaterialPanel::takeSliders);
    connect(_shininess, &QSlider::valueChanged, this, &MaterialPanel::takeSliders);
    hide();
}

void MaterialPanel::showMaterial(const ModelMaterial& material, const TextureSwatches& swatches) {
    const QScopedValueRollback<bool> reading(_isReading, true);
    _values = material.values;
    _name->setText(QStringLiteral("<b>%1</b>").arg(material.name.toHtmlEscaped()));
    _opacity->setValue(qRound(qBound(0.0F, _values.opacity, 1.0F) * kOpacitySteps));
    _shininess->setValue(stepsOf(_values.shininess));
    showValues();
    delete _textures;
    _textures = new QWidget;
    new QVBoxLayout(_textures);
    _textures->layout()->setContentsMargins({});
    for (const MaterialTexture& texture : material.textures)
        addTexture(texture, swatches.at(texture.path));
    _column->addWidget(_textures);
    show();
}

void MaterialPanel::showValues() {
    QPixmap swatch(kSwatchSide, kSwatchSide / 2);
    swatch.fill(_values.diffuse);
    _colour->setIcon(swatch);
    _colour->setText(_values.diffuse.name());
    _opacity->setToolTip(QLocale().toString(double(_values.opacity), 'g', 3));
    _shininess->setToolTip(QLocale().toString(double(_values.shininess), 'g', 3));
}

void MaterialPanel::setColour(const QColor& colour) {
    _values.diffuse = colour;
    showValues();
    Q_EMIT changed(_values);
}

void MaterialPanel::chooseColour() {
    const QColor before = _values.diffuse;
    QColorDialog dialog(before, this);
    connect(&dialog, &QColorDialog::currentColorChanged, this, &MaterialPanel::setColour);
    if (dialog.exec() == QDialog::Rejected)
        setColour(before);
}

void MaterialPanel::takeSliders() {
    if (_isReading)
        return;
    _values.opacity = float(_opacity->value()) / kOpacitySteps;
    _values.shininess = shininessOf(_shininess->value());
    showValues();
    Q_EMIT changed(_values);
}

void MaterialPanel::addTexture(const MaterialTexture& texture, const QImage& swatch) {
    auto* const row = new QHBoxLayout;
    auto* const text = new QLabel;
    text->setWordWrap(true);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    if (texture.isMissing()) {
        text->setText(
            tr("%1 is missing. Tried:\n%2").arg(texture.map, texture.tried.join(QLatin1Char('\n'))));
        text->setStyleSheet(QStringLiteral("color: #cd2d2d"));
    } else {
        auto* const picture = new QLabel;
        picture->setFixedSize(kSwatchSide, kSwatchSide);
        picture->setScaledContents(true);
        picture->setPixmap(QPixmap::fromImage(swatch));
        row->addWidget(picture);
        text->setText(tr("%1: %2, %3 x %4")
                          .arg(texture.map, QFileInfo(texture.path).fileName())
                          .arg(texture.size.width())
                          .arg(texture.size.height()));
        text->setToolTip(texture.path);
    }
    row->addWidget(text, 1);
    static_cast<QVBoxLayout*>(_textures->layout())->addLayout(row);
}

QString MaterialPanel::text() const {
    QStringList lines;
    for (const QLabel* label : findChildren<QLabel*>())
        lines.append(label->text());
    return lines.join(QLatin1Char('\n'));
}

} // namespace Atelier::Vel::Viewer
