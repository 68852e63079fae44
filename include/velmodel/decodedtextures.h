#pragma once

#include <functional>
#include <memory>

#include <QtCore/QStringList>

#include <velmodel/modelfiles.h>
#include <velmodel/textureloader.h>

namespace Atelier::Vel {

/// How far DecodedTextures::decode() has come.
struct DecodeStep {
    int done = 0;     ///< images of this call that were decoded or could not be
    int total = 0;    ///< images of this call; not 0 when the progress function is called
    qint64 bytes = 0; ///< memory of all images that wait for handOver()
};

/// A callback that observes and can cancel a decode() call, on the thread of that call.
/// Requires: it does not use the object that decodes.
/// Returns:  true to continue, false to cancel.
using DecodeProgress = std::function<bool(const DecodeStep& step)>;

/// How much one handOver() call gives to OpenGL. It stops before the image that would exceed one of the two.
/// By default a call takes about as long as a frame: 13 ms with a driver that does all work on the processor.
struct HandOverBudget {
    qint64 bytes = 4 << 20; ///< of images, four for each pixel
    int images = 16;
};

/// The textures of a model, decoded by any thread and given to OpenGL in portions, so that no frame waits for
/// all of them. A viewer calls decode() with DrawData::texturePaths() on the thread that reads the file, sets
/// loader() for the model that it uploads, and calls handOver() before each draw.
///
/// Each image waits in memory from decode() to handOver(). Until then its texture is white. The textures are
/// those of makeTextureLoader() with the same files and options, also in further groups of contexts, where
/// the file is read again. To treat some textures differently, such as those with heights in place of
/// colours, make an object for each kind, and a loader that calls theirs.
///
/// A handle: copies share the images and textures, which live as long as a copy, a loader or a model with the
/// loader.
///
/// Threads: one thread at a time uses an object and its copies. Several threads may decode for objects of
///          their own.
class VELMODEL_EXPORT DecodedTextures {
public:
    /// The textures of `files` only.
    explicit DecodedTextures(const ModelFiles& files = {}, const TextureOptions& options = {});
    /// The textures of `source`, which is called by decode() and on the thread of the context. Requires:
    /// `source` is not null.
    explicit DecodedTextures(std::shared_ptr<ModelSource> source, const TextureOptions& options = {});

    /// Decodes the image files at `paths`, in their order; those that an earlier call has decoded are left
    /// out. Backslashes are treated as by makeTextureLoader(). `progress`, which may be empty, is called
    /// before each image and after the last one.
    ///
    /// Returns:  false if `progress` cancels. What was decoded before is kept, and a further call continues.
    /// Errors:   a file that makeTextureLoader() would refuse makes no texture. The sides are limited to
    ///           32,768 pixels here, and to the limit of the driver later. What `progress` throws
    ///           cancels, too.
    /// Threads:  any thread, without a context.
    /// Cost:     linear in the pixels; keeps four bytes for each.
    bool decode(const QStringList& paths, const DecodeProgress& progress = {});

    /// The function for GPUModel::setTextureLoader(). Several models may share it. For a file that cannot be
    /// decoded, and for an image with a side above the limit of the driver, the function returns null, which
    /// is drawn white, after a warning. Paths that were not decoded are loaded at once, as by
    /// makeTextureLoader().
    GPUModel::TextureLoader loader() const;

    /// Gives images to OpenGL in the order of decode(), and frees their memory. Stops at the limits of
    /// `budget`, but always gives at least one. Where OpenGL has no memory for an image, its texture is
    /// white, after a warning. The client's state is restored.
    ///
    /// Requires: a current OpenGLDeviceContext, else nothing happens.
    /// Returns:  the number of images that still wait, see waitingCount().
    /// Cost:     linear in the pixels. The next draw of each model finds the names of its textures again.
    int handOver(const HandOverBudget& budget = {});

    /// The number of decoded images that wait for handOver().
    int waitingCount() const;

private:
    struct VELMODEL_NO_EXPORT Data;
    std::shared_ptr<Data> _data;
};

} // namespace Atelier::Vel
