#pragma once

#include <QtWidgets/QWidget>

#include "modelcontents.h"

class QLabel;
class QPushButton;
class QSlider;
class QVBoxLayout;

namespace Atelier::Vel::Viewer {

class TextureSwatches;

/// Shows the values and textures of a material, and changes its colour, opacity and shininess.
class MaterialPanel : public QWidget {
    Q_OBJECT
public:
    explicit MaterialPanel(QWidget* parent = nullptr);

    void showMaterial(const ModelMaterial& material, const TextureSwatches& swatches);
    const MaterialValues& values() const { return _values; }
    /// All texts, line by line.
    QString text() const;
    QSlider& opacity() const { return *_opacity; }
    QSlider& shininess() const { return *_shininess; }
    void setColour(const QColor& colour);

Q_SIGNALS:
    /// The user has changed the values of the material.
    void changed(const MaterialValues& values);

private:
    void chooseColour();
    void takeSliders();
    void showValues();
    void addTexture(const MaterialTexture& texture, const QImage& swatch);

    MaterialValues _values;
    bool _isReading = false; // while the sliders follow the material
    QLabel* _name;
    QPushButton* _colour;
    QSlider* _opacity;
    QSlider* _shininess;
    QWidget* _textures = nullptr;
    QVBoxLayout* _column;
};

} // namespace Atelier::Vel::Viewer
