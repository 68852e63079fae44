#pragma once

#include <optional>

#include <QtCore/QByteArrayList>
#include <QtCore/QString>

#include "files/regularfile.h"

namespace Atelier::Vel {

/// A folder, kept open, whose files are reached without ever leaving it.
class ModelFolder {
public:
    explicit ModelFolder(const QString& path);

    const QString& path() const { return _path; }

    /// The names that lead from the folder to where `path` ends, all symbolic links followed as far as there
    /// is something to follow. Returns: none where that is not in the folder.
    std::optional<QByteArrayList> resolve(const QString& path) const;

    /// Opens a regular file at the end of a way. The way is gone name by name and no link is followed, so
    /// that a link which has been put in its place meanwhile leads nowhere.
    Descriptor open(const QByteArrayList& way) const;

private:
    bool takeFolder(QByteArrayList& names) const;
    QByteArray linkTarget(const QByteArrayList& way) const;
    bool isFolder(const QByteArrayList& way) const;

    QString _path;
    bool _isNative; ///< else it is one of Qt's resources, where there are no links
    Descriptor _folder;
    QByteArrayList _names;     ///< the path by which it was named
    QByteArrayList _realNames; ///< the same with all links followed
};

} // namespace Atelier::Vel
