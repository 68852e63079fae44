#pragma once

#include <QtCore/QString>

#include <velgl/instancedata.h>
#include <velmodel/drawdata.h>
#include <velmodel/loadprogress.h>
#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

class GPUModel;

/// Loads a Wavefront OBJ file with its material libraries into a new model that the caller owns.
/// Requires: a current OpenGLDeviceContext for the upload; without one the model stays empty.
/// Returns: null, and a message in `error` that names the file, when it or a library that it names is no
/// regular file or cannot be read, or when it holds more than a stream of the builder can (a warning says
/// which); `error` is left alone on success. Lines that mean nothing are passed over without a word. Throws
/// std::bad_alloc when memory runs out, and keeps nothing then. Cost: linear in the text, which is read in
/// blocks and never held as a whole.
VELMODEL_EXPORT GPUModel* loadModelFromOBJFile(const QString& path, QString& error);

/// What a load met on its way; filled by the overload that takes one.
struct LoadReport {
    qint64 bytesRead = 0;            ///< size of the OBJ text read
    quint64 faces = 0;               ///< faces that parsed
    quint64 droppedFaces = 0;        ///< faces dropped because a corner was no integer
    quint64 facesWithoutGroup = 0;   ///< faces whose material was not known when they were read
    quint64 untriangulatedFaces = 0; ///< faces in a group that gave no triangle
    quint64 substitutedCorners = 0;  ///< attribute values taken as zero for want of a valid index
    quint64 corners = 0;             ///< vertices before merging
    quint64 vertices = 0;            ///< vertices after merging
    quint64 triangles = 0;           ///< triangles of all commands
};

/// The same. Calls `progress` (may be empty) while it reads, merges corners, cuts faces and makes normals,
/// and fills `report` (may be null) on success. Cancelling gives null and the error "Loading OBJ file '...'
/// was cancelled".
VELMODEL_EXPORT GPUModel* loadModelFromOBJFile(const QString& path, QString& error,
                                               const LoadProgress& progress, LoadReport* report = nullptr);

/// What a load shall and shall not do. The defaults are what the functions without options do.
struct LoadOptions {
    enum class Files {
        Anywhere,    ///< any that the model names
        InOwnFolder, ///< those in the folder of the OBJ file and below it
    };
    /// The material libraries and textures that may be read. Others count as unreadable, and a warning says
    /// so: with such a library the load fails, in place of such a texture the material gets a white one. The
    /// OBJ file itself may lie anywhere, and be a link. Textures are opened later, by whoever draws: see
    /// loadTextureFrom().
    Files files = Files::Anywhere;
};

/// The same with options.
VELMODEL_EXPORT GPUModel* loadModelFromOBJFile(const QString& path, QString& error,
                                               const LoadProgress& progress, LoadReport* report,
                                               const LoadOptions& options);

/// Reads an OBJ file with its material libraries into draw data, without OpenGL: on any thread, with no
/// context, several files at a time. upload() takes it to a model, on the thread of the context. The options
/// of an upload whose result is that of a load are {makeIdentityInstance()}.
/// Textures are named only: whoever draws opens them. White maps of the default material, and those that
/// stand for files that may not be read, are made by the upload. Returns: null draw data, and a message in
/// `error`, where a load fails or is cancelled; null draw data with `error` left alone for a file without
/// faces. Exceptions and cost are those of a load.
VELMODEL_EXPORT DrawData readDrawDataFromOBJFile(const QString& path, QString& error,
                                                 const LoadProgress& progress = {},
                                                 LoadReport* report = nullptr,
                                                 const LoadOptions& options = {});

/// The instance data of a model that stands where its file puts it: an "InstanceInfo" with identity matrices.
VELMODEL_EXPORT InstanceData makeIdentityInstance();

/// The material of faces that name none: an "OBJMaterial" with a light grey diffuse colour and white maps.
VELMODEL_EXPORT InstanceData makeDefaultMaterial();

} // namespace Atelier::Vel
