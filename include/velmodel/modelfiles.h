#pragma once

#include <memory>

#include <QtCore/QFile>
#include <QtCore/QString>

#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

class ModelFolder;

/// The files that may be read for a model: all that there are, or those of one folder.
///
/// Opening never waits and touches nothing but regular files: pipes, devices and sockets are not opened, and
/// what the kernel shows under /proc and /sys is not read.
class VELMODEL_EXPORT ModelFiles {
public:
    /// Files anywhere.
    ModelFiles();
    /// Files in `folder` and in the folders below it; none when there is no such folder now. Symbolic links
    /// are followed. A path or link that goes up beyond the folder leaves it, and so does one that starts
    /// from the root, unless it begins with the folder's path, as given or with all links followed.
    explicit ModelFiles(const QString& folder);

    /// The absolute path of the folder; null where files may lie anywhere.
    QString folder() const;
    /// Whether `path` leads to where files may be read; there need not be one. Nothing that lies outside of
    /// the folder is opened to find out.
    bool allows(const QString& path) const;
    /// Opens the file at `path` to be read, in `mode` ReadOnly with or without Text. Returns: null when it is
    /// not allowed, is no regular file, or may not be read by this user.
    std::unique_ptr<QFile> open(const QString& path, QIODevice::OpenMode mode = QIODevice::ReadOnly) const;

private:
    std::shared_ptr<const ModelFolder> _folder; ///< null for files anywhere
};

} // namespace Atelier::Vel
