#pragma once

#include <memory>

#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <velgl/gpumodel.h>

#include "support/glfixture.h"

namespace Atelier::Vel {

/// An image in which each pixel has its own colour, which encodes its place.
QImage numbered(int width, int height, QImage::Format format = QImage::Format_ARGB32);

/// A test with a folder for images and models.
class TextureFixture : public Testing::GLFixture {
protected:
    QString path(const QString& name) const { return _folder.filePath(name); }
    /// Returns: the path of the new file.
    QString save(const QImage& image, const QString& name) const;
    QString saveColor(const QColor& color, const QString& name) const;

    /// A triangle that fills the picture, with the texture `map` in its library's words.
    std::unique_ptr<GPUModel> loadTriangle(const QByteArray& map) const;
    /// The colour of the middle of the picture: that of the texture.
    static QColor drawn(GPUModel& model);

private:
    QTemporaryDir _folder;
};

} // namespace Atelier::Vel
