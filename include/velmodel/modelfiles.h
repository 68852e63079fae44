#pragma once

#include <memory>

#include <QtCore/QFile>
#include <QtCore/QString>

#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

class ModelFolder;
class ModelSource;

/// The files that may be read for a model: all files, or those of one folder.
///
/// Only regular files and Qt resources are opened, and opening never waits: pipes, devices, sockets and the
/// files that the kernel shows under /proc and /sys are refused.
/// A value: copies are cheap and share the folder, which stays open while one of them lives.
/// Threads: const functions may be called on several threads at a time.
class VELMODEL_EXPORT ModelFiles {
public:
    /// All files.
    ModelFiles();
    /// The files in `folder` and in the folders below it. If the folder does not exist now, no file can be
    /// opened. A relative path starts from the current directory.
    ///
    /// Symbolic links are followed. A path or a link leaves the folder if it goes up beyond it, or if it
    /// starts from the root; the latter does not apply to one that begins with the path of the folder, either
    /// as it was given or with all links followed.
    explicit ModelFiles(const QString& folder);

    /// The absolute path of the folder; null if all files are allowed.
    QString folder() const;
    /// Whether a file at `path` may be read. The file need not exist. Nothing outside of the folder is opened
    /// for the check.
    /// Cost: a few system calls per name in the path; none if all files are allowed.
    bool allows(const QString& path) const;
    /// Whether there is a regular file or a Qt resource at `path` that may be read, without opening it.
    /// Cost: as allows(), and one system call more.
    bool contains(const QString& path) const;
    /// Opens the file at `path` for reading. `mode` is ReadOnly, with or without Text.
    /// Returns: the open file; null if it is not allowed, is not a regular file, or cannot be read by this
    ///          user.
    std::unique_ptr<QFile> open(const QString& path, QIODevice::OpenMode mode = QIODevice::ReadOnly) const;
    /// These files as a source of models and textures. Its names are paths; a relative one in a file starts
    /// from the folder of that file.
    std::shared_ptr<ModelSource> source() const;

private:
    friend class FolderListings;

    std::shared_ptr<const ModelFolder> _folder; ///< null if all files are allowed
};

} // namespace Atelier::Vel
