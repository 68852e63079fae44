#pragma once

#include <optional>

#include <QtCore/QByteArrayList>
#include <QtCore/QString>

#include "files/regularfile.h"

namespace Atelier::Vel {

/// A folder that is kept open. Its files are opened without ever leaving the folder.
class ModelFolder {
public:
    explicit ModelFolder(const QString& path);

    const QString& path() const { return _path; }

    /// The way to `path`: the names from the folder to its end, with all existing symbolic links followed.
    /// Returns: no value if the end is not in the folder.
    std::optional<QByteArrayList> resolve(const QString& path) const;

    /// Opens a regular file at the end of a way. Opens name by name and follows no link, so that a link which
    /// has replaced a name in the meantime makes the call fail.
    Descriptor open(const QByteArrayList& way) const;
    /// Opens the folder at the end of a way in the same manner, to read its names.
    Descriptor openFolder(const QByteArrayList& way) const;
    /// Whether there is a regular file at the end of a way.
    bool hasFile(const QByteArrayList& way) const;

private:
    bool takeFolder(QByteArrayList& names) const;
    QByteArray linkTarget(const QByteArrayList& way) const;
    bool isFolder(const QByteArrayList& way) const;
    template<typename Use>
    auto atEndOf(const QByteArrayList& way, const Use& use) const;

    QString _path;
    bool _isNative; ///< otherwise one of Qt's resources, which have no links
    Descriptor _folder;
    QByteArrayList _names;     ///< the path by which it was named
    QByteArrayList _realNames; ///< the same with all links followed
};

} // namespace Atelier::Vel
