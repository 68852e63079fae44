#pragma once

#include <memory>

#include <QtCore/QFile>
#include <QtCore/QString>
#include <QtGui/QImage>
#include <QtGui/QImageReader>

#include <velmodel/modelfiles.h>

namespace Atelier::Vel {

/// The path with slashes in place of backslashes.
QString withSlashes(QString path);

/// Opens the file that a material refers to by `path`. Other systems write backslashes: if there is no such
/// file, they are read as slashes.
/// Returns: null if the file is not one of `files` or cannot be opened.
std::unique_ptr<QFile> openMaterialFile(const ModelFiles& files, const QString& path);

/// Whether an image of this format may be read.
/// Requires: the device of `reader` is one of `files`, or null if it could not be opened.
bool mayBeRead(const QImageReader& reader, const ModelFiles& files);

/// The limit for the sides of an image, in pixels. It is not called for a file that cannot be opened.
using SideLimit = int (*)();

/// Decodes the image in `file`, which is one of `files`, or null. An image with a side above the limit, or of
/// more than 1 GiB, is not decoded.
/// Returns: four bytes per pixel: blue, green, red, alpha. The last row comes first, as OpenGL expects. Null
///          if the file is not such an image.
QImage readImage(const std::unique_ptr<QFile>& file, const ModelFiles& files, SideLimit largestSide);

/// The same for the file that openMaterialFile() opens.
QImage readMaterialImage(const ModelFiles& files, const QString& path, SideLimit largestSide);

} // namespace Atelier::Vel
