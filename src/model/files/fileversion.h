#pragma once

#include <optional>
#include <tuple>

#include <sys/stat.h>

#include <QtCore/QFile>

namespace Atelier::Vel {

/// Which file it is, and its state: device, number, size, and when its content and its properties changed.
using FileVersion = std::tuple<quint64, quint64, qint64, qint64, qint64, qint64, qint64>;

/// Nothing for what is no file on a disk.
inline std::optional<FileVersion> versionOf(const QFile& file) {
    struct stat status {};
    if (file.handle() == -1 || fstat(file.handle(), &status) != 0)
        return {};
    return FileVersion(status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec,
                       status.st_mtim.tv_nsec, status.st_ctim.tv_sec, status.st_ctim.tv_nsec);
}

} // namespace Atelier::Vel
