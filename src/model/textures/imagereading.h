#pragma once

#include <memory>

#include <QtCore/QIODevice>
#include <QtCore/QString>
#include <QtGui/QImage>
#include <QtGui/QImageReader>

#include <velmodel/modelsource.h>

namespace Atelier::Vel {

/// The path with slashes in place of backslashes.
QString withSlashes(QString path);

/// Opens an image. Returns: null if `source` has none of that name, or it cannot be opened.
std::unique_ptr<QIODevice> openImage(ModelSource& source, const QString& path);

/// Opens the image that a material refers to by `path`, as openImage() does. Other systems write backslashes:
/// if there is no such file, they are read as slashes.
std::unique_ptr<QIODevice> openMaterialFile(ModelSource& source, const QString& path);

/// Whether an image of this format may be read.
/// Requires: the device of `reader` is from `source`, or null if it could not be opened.
bool mayBeRead(const QImageReader& reader, const ModelSource& source);

/// The limit for the sides of an image, in pixels. It is not called for a file that cannot be opened.
using SideLimit = int (*)();

/// The memory of the pixels of an image. A bitmap whose rows run from top to bottom reports a negative
/// height.
qint64 decodedBytes(const QSize& size);
/// Whether an image of that size is decoded: both sides are up to the limit, and the pixels up to 1 GiB. An
/// image without a known size is decoded.
bool isDecodable(const QSize& size, int largestSide);

/// Decodes the image in `file`, which is from `source`, or null. An image with a side above the limit, or of
/// more than 1 GiB, is not decoded.
/// Returns: four bytes per pixel: blue, green, red, alpha. The last row comes first, as OpenGL expects. Null
///          if the file is not such an image.
QImage readImage(const std::unique_ptr<QIODevice>& file, const ModelSource& source, SideLimit largestSide);

/// The same for the file that openMaterialFile() opens.
QImage readMaterialImage(ModelSource& source, const QString& path, SideLimit largestSide);

} // namespace Atelier::Vel
