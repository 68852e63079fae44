#pragma once

#include <functional>

#include <QtCore/QString>

#include <velgl/instancedata.h>
#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

class GPUModel;

/// Called with the bytes read so far and the size of the file; returns false to cancel.
using LoadProgress = std::function<bool(qint64 bytesDone, qint64 bytesTotal)>;

/// Loads a Wavefront OBJ file with its material libraries into a new model that the caller owns.
/// Requires: a current OpenGLDeviceContext for the upload; without one the model stays empty.
/// Returns: null, and a message in `error`, when a file cannot be read; `error` is left alone on success.
VELMODEL_EXPORT GPUModel* loadModelFromOBJFile(const QString& path, QString& error);

/// The same, telling `progress` now and then how far it is. Cancelling gives null and an error text that says
/// so.
VELMODEL_EXPORT GPUModel* loadModelFromOBJFile(const QString& path, QString& error,
                                               const LoadProgress& progress);

/// The material of faces that name none: an "OBJMaterial" with a light grey diffuse colour and white maps.
VELMODEL_EXPORT InstanceData makeDefaultMaterial();

} // namespace Atelier::Vel
