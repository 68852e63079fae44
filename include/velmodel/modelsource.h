#pragma once

#include <memory>

#include <QtCore/QIODevice>
#include <QtCore/QString>

#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

/// Where the files of a model come from: memory, an archive, a network. ModelFiles::source() is one for the
/// files of the system.
///
/// A load opens the OBJ file and its libraries, each once, and resolves the names in them. With a LoadReport
/// it may read the OBJ file again from its start, unless the device is sequential. Textures are opened when
/// they are drawn, and again in each further group of sharing contexts. Threads: a load calls the source on
/// its own thread, and makeTextureLoader() on that of the context. A
///          source that is used by both, or by several loads, at the same time must allow that.
/// Errors:  an exception from a source or its devices ends the load and reaches the caller of the load.
class VELMODEL_EXPORT ModelSource {
public:
    ModelSource() = default;
    virtual ~ModelSource();
    ModelSource(const ModelSource&) = delete;
    ModelSource& operator=(const ModelSource&) = delete;

    /// Opens a file that resolve() has named, or the OBJ file by the name that was passed to the load.
    /// Returns: a device that is open for reading, at its start; null if there is no such file. Whether it is
    ///          open with QIODevice::Text makes no difference.
    ///
    /// A device may be sequential, such as a process or a stream that is inflated: it is read in order to its
    /// end, and waitForReadyRead() is called where it has no data yet. It ends where a read returns -1, or
    /// where it has no data and waiting for more fails. A source whose sequential devices may fail throws
    /// there. Of other devices, a read that returns -1 before their size() is an error, and the load fails.
    virtual std::unique_ptr<QIODevice> open(const QString& name) = 0;
    /// The name for open() of a file that the file `base` calls `name`: a material library in an OBJ file, or
    /// a texture in a material library. `base` was passed to open() before. Materials have textures by this
    /// name.
    virtual QString resolve(const QString& base, const QString& name) = 0;
};

} // namespace Atelier::Vel
