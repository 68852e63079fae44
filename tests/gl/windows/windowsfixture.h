#pragma once

#include <memory>
#include <ostream>
#include <vector>

#include <QtCore/QTemporaryDir>
#include <QtGui/QColor>
#include <QtWidgets/QWidget>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velmodel/drawdata.h>

#include "support/messagelog.h"
#include "windows/canvas.h"

namespace Atelier::Vel::Testing {

/// The colours in the quarters of a cell of a picture.
struct Cell {
    QColor topLeft;
    QColor topRight;
    QColor bottomLeft;
    QColor bottomRight;

    static Cell plain(const QColor& color) { return {color, color, color, color}; }

    /// Whether no channel differs by more than the rounding of one value.
    bool looksLike(const Cell& other) const;
    friend void PrintTo(const Cell& cell, std::ostream* out);
};

/// Compares cells, with a tolerance for rounding.
MATCHER_P(looksLike, cells, ::testing::PrintToString(cells)) {
    bool alike = arg.size() == cells.size();
    for (int i = 0; alike && i < cells.size(); ++i)
        alike = arg[i].looksLike(cells[i]);
    return alike;
}

/// The cells of a picture of the scene.
QVector<Cell> cellsOf(const QImage& picture);
/// The cells of the next frame of a canvas.
QVector<Cell> cellsOf(WidgetCanvas& canvas);

/// Compares all pixels, exactly.
MATCHER_P(hasThePixelsOf, picture, ::testing::PrintToString(cellsOf(picture))) {
    *result_listener << ::testing::PrintToString(cellsOf(arg));
    return arg == picture;
}

/// Matches a QString that contains `part`.
MATCHER_P(mentions, part, ::testing::PrintToString(part)) {
    return arg.contains(part);
}

constexpr int kCells = 4; // of a picture
constexpr int kCellSide = 32;
constexpr QSize kPictureSize(kCells* kCellSide, kCellSide);

/// A top-level window for one canvas. It is on the screen while it has one.
class Frame : public QWidget {
public:
    Frame();

    /// Moves `canvas` into this window and waits until it has drawn a frame there.
    void dock(WidgetCanvas& canvas);
    /// The pixels of this window on the screen.
    QImage onScreen() const;
};

/// A frame with a canvas of its own, which has drawn a frame.
class CanvasFrame : public Frame {
public:
    /// The canvas shows `model`, or nothing if that is null.
    explicit CanvasFrame(GPUModel* model = nullptr);

    WidgetCanvas& canvas() const { return *_canvas; }

private:
    WidgetCanvas* _canvas;
};

/// How a model gets its data again in a new context.
enum class Restoring { KeptData, Refill };

/// Tests with windows on an X server. Warnings fail a test unless it takes them.
///
/// The scene is a row of four square cells, each with its own material: a green one; one with the image file
/// picture() as its texture; one with a texture of a solid colour, for which the OBJ file has a Kd; and one
/// with the default material, which has white maps.
class WindowsTest : public ::testing::Test {
protected:
    static constexpr int kPictureSide = 16;

    void SetUp() override;
    void TearDown() override;

    /// Returns the warnings since the last call; they no longer fail the test.
    std::vector<QString> takeWarnings();

    QString objFile() const { return _folder.filePath("scene.obj"); }
    /// The image file of the scene: four coloured quarters.
    QString picture() const { return _folder.filePath("picture.png"); }
    void writePicture(int side) const;

    /// Loads objFile(). These functions require a current context.
    std::unique_ptr<GPUModel> loadedModel() const;
    /// Uploads drawData().
    std::unique_ptr<GPUModel> uploadedModel() const;
    std::unique_ptr<GPUModel> uploadedModel(const UploadOptions& options) const;
    DrawData drawData() const;
    /// A model of drawData() that can be drawn in further contexts.
    std::unique_ptr<GPUModel> restorableModel(Restoring restoring) const;
    /// The options of an upload that keeps the data.
    static UploadOptions keptData();

    /// The cells of the scene.
    static QVector<Cell> scene();
    /// The cells of the scene if there is no image file.
    static QVector<Cell> sceneWithoutPicture();
    /// The cells if nothing is drawn.
    static QVector<Cell> nothing() { return QVector<Cell>(kCells, Cell::plain(Qt::black)); }

private:
    QTemporaryDir _folder;
    MessageLog _log;
};

/// Tests of windows whose contexts share objects, by Qt::AA_ShareOpenGLContexts.
class SharingWindowsTest : public WindowsTest {};

/// Tests of windows whose contexts do not share objects.
class SeparateWindowsTest : public WindowsTest {};

} // namespace Atelier::Vel::Testing
