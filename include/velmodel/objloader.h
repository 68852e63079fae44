#pragma once

#include <memory>

#include <QtCore/QString>

#include <velgl/instancedata.h>
#include <velmodel/drawdata.h>
#include <velmodel/loadoptions.h>
#include <velmodel/loadprogress.h>
#include <velmodel/loadreport.h>
#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

class GPUModel;
class ModelSource;

/// Loads a Wavefront OBJ file with its material libraries into a new model that the caller owns.
///
/// The attributes are "va_Vertex" (three floats), "va_Normal" (three floats) and "va_TexCoord" (two
/// floats). Normals are computed if the file has none. Lines that are not known are skipped without a
/// message.
/// Threads:  to be called on the thread whose context is current. Without a current OpenGLDeviceContext the
///           text is read, and the model stays empty.
/// Returns:  null, with a message in `error` that names the file, if the file or a library that it names is
///           not a regular file or cannot be read, or if it holds more than a stream can, after a warning
///           that names the stream. On success `error` is not changed.
/// Errors:   throws std::bad_alloc when memory runs out, and keeps nothing.
/// Cost:     linear in the text, except for polygons of more than four corners. The text is read in blocks
///           and never held as a whole. docs/limits.md has the figures.
VELMODEL_EXPORT GPUModel* loadModelFromOBJFile(const QString& path, QString& error);

/// The same, with `progress` (may be empty) called while it reads, merges corners, cuts faces and makes
/// normals, and `report` (may be null) filled on every return.
/// Returns: null, with the error "Loading OBJ file '...' was cancelled", if `progress` cancels.
VELMODEL_EXPORT GPUModel* loadModelFromOBJFile(const QString& path, QString& error,
                                               const LoadProgress& progress, LoadReport* report = nullptr);

/// The same, with options, and without a success that shows nothing.
/// Returns: also null, with a message in `error`, if no OpenGLDeviceContext is current or its version is
/// below
///          OpenGL 4.3, before anything is read, and if nothing of the file can be drawn.
VELMODEL_EXPORT std::unique_ptr<GPUModel> loadModelFromOBJFile(const QString& path, QString& error,
                                                               const LoadOptions& options,
                                                               const LoadProgress& progress = {},
                                                               LoadReport* report = nullptr);

/// Reads an OBJ file with its material libraries into draw data, without OpenGL. upload() hands that to a
/// model; with the options {makeIdentityInstance()} the result is that of a load.
/// Textures are only named: they are opened when they are drawn. The white maps of the default material, and
/// those that replace files that may not be read, are made by the upload.
/// Threads:  any thread, without a context. Several threads may read files at a time.
/// Returns:  null draw data, with a message in `error`, if a load would fail or if `progress` cancels; null
///           draw data, with `error` not changed, if the file has no faces.
/// Errors and cost: those of a load.
VELMODEL_EXPORT DrawData readDrawDataFromOBJFile(const QString& path, QString& error,
                                                 const LoadProgress& progress = {},
                                                 LoadReport* report = nullptr,
                                                 const LoadOptions& options = {});

/// Loads a model with options, as loadModelFromOBJFile() does, from a source other than files. `name` and the
/// names that the files contain are those of the source; the errors name them. The model loads its textures
/// from the source, too, and keeps it for that.
/// LoadOptions::files has no effect: a source determines what may be read. LoadRepairs::findFiles has one
/// only on the source of ModelFiles. Returns: also null if `source` is null or has no such file. Errors:  an
/// exception from `source` reaches the caller, and keeps nothing.
VELMODEL_EXPORT std::unique_ptr<GPUModel> loadModelFromOBJ(const std::shared_ptr<ModelSource>& source,
                                                           const QString& name, QString& error,
                                                           const LoadOptions& options = {},
                                                           const LoadProgress& progress = {},
                                                           LoadReport* report = nullptr);

/// Reads draw data, as readDrawDataFromOBJFile() does, from a source other than files; otherwise as
/// loadModelFromOBJ(). `source` is called on this thread only. A model that the data is uploaded to gets
/// makeTextureLoader(source) from the caller.
VELMODEL_EXPORT DrawData readDrawDataFromOBJ(const std::shared_ptr<ModelSource>& source, const QString& name,
                                             QString& error, const LoadOptions& options = {},
                                             const LoadProgress& progress = {}, LoadReport* report = nullptr);

/// The instance data of a model that is not moved from its position in the file: an "InstanceInfo" with three
/// identity matrices of 16 floats each, "ModelMatrix", "PreviousModelMatrix" and "ModelNormalMatrix".
VELMODEL_EXPORT InstanceData makeIdentityInstance();

/// Registers the layout "OBJMaterialExtended" now, for programs that make shaders for it before the first
/// upload of such materials, which registers it as well. Threads: any thread, without a context.
VELMODEL_EXPORT void registerExtendedMaterials();

/// The material of faces that name none: an "OBJMaterial" with a light grey diffuse colour and white maps.
/// The maps are shared textures of the TextureManager.
/// Threads: one thread at a time, that of all other calls to VelGL.
VELMODEL_EXPORT InstanceData makeDefaultMaterial();

} // namespace Atelier::Vel
