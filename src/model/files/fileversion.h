#pragma once

#include <optional>
#include <tuple>

#include <sys/stat.h>

#include <QtCore/QFile>

namespace Atelier::Vel {

/// The identity and state of a file: device, file number, size, and the times of the last change of its
/// content and of its properties.
using FileVersion = std::tuple<quint64, quint64, qint64, qint64, qint64, qint64, qint64>;

/// Returns: the version; nothing if `file` is not a file on a disk.
inline std::optional<FileVersion> versionOf(const QFile& file) {
    struct stat status {};
    if (file.handle() == -1 || fstat(file.handle(), &status) != 0)
        return {};
    return FileVersion(status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec,
                       status.st_mtim.tv_nsec, status.st_ctim.tv_sec, status.st_ctim.tv_nsec);
}

} // namespace Atelier::Vel
